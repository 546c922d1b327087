// Private to dbgbuildinfomgr.cpp, incontextaliasmgr.cpp, inpackages.cpp, lglog.cpp and tracemanager.cpp.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

// Static objects that static destruction leaves alone. Threads go on while `main` returns, and a static object may be
// destroyed behind those of this library: what they can still call has to be there. The system takes the memory back
// with the rest of the process's. Until then it is in reach, so nobody takes it for a leak.
// Tests: tests/base/neverdestroyedtest.cpp, tests/end.

namespace Vn
{

/// An object that is made like any other and never destroyed.
///
///     NeverDestroyed<Packages> packages;
///     packages->base.getName();
template <class T>
class NeverDestroyed
{
public:
    template <class... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments)
    {
        ::new (static_cast<void*>(_storage)) T(std::forward<Arguments>(arguments)...);
    }
    NeverDestroyed(NeverDestroyed const&) = delete;
    NeverDestroyed& operator=(NeverDestroyed const&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(_storage)); }
    T* operator->() { return &**this; }

private:
    alignas(T) std::byte _storage[sizeof(T)];
};

}  // namespace Vn

/// Defines a static data member that is never destroyed, at namespace scope:
///
///     VN_NEVER_DESTROYED_MEMBER(ObjPtr<LgRegistry>, registryStorage, "_ZN2Vn5LgLog9_registryE");
///
/// The class declares the member as what it is, and every definition of such a member has it destroyed at exit; there
/// is no attribute against that which all compilers know. So this defines no more than the memory: zeros, under the
/// name by which the linker knows the member. A TYPE whose objects aren't all zeros after their construction is
/// constructed in there, in NAME. A wrong SYMBOL is an undefined symbol when the library is linked. Specifiers
/// of the definition may follow, such as VN_BASE_EXPORT: without it the name isn't exported, as the class's others are.
#define VN_NEVER_DESTROYED_MEMBER(TYPE, NAME, SYMBOL, ...) \
    alignas(TYPE) __VA_ARGS__ constinit std::byte NAME[sizeof(TYPE)] __asm__(SYMBOL) = {}
