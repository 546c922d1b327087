#include <base/neverdestroyed_p.h>

#include <base/objptr.h>
#include <base/vector.h>

#include "expectchild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <iterator>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace
{
class Talker
{
public:
    explicit Talker(std::string name) : _name(std::move(name)) {}
    ~Talker() { std::cout << _name << " destroyed" << std::endl; }

    std::string const& getName() const { return _name; }

private:
    std::string _name;
};

static_assert(std::is_trivially_destructible_v<Vn::NeverDestroyed<Talker>>);
}  // namespace

VN_CHILD(neverDestroyed)
{
    static Talker usual("the usual");
    static Vn::NeverDestroyed<Talker> other("the other");
    std::cout << other->getName() << ", " << (*other).getName() << std::endl;
    return 0;
}

TEST(NeverDestroyed, isMadeLikeAnyOtherAndNotDestroyed)
{
    VnTest::expectOutput("neverDestroyed", "the other, the other\nthe usual destroyed\n");
}

namespace
{
/// Whether a new object is all zeros, in memory that wasn't.
template <class T>
bool isZeroAtFirst()
{
    alignas(T) std::byte storage[sizeof(T)];
    std::memset(storage, 0xFF, sizeof storage);
    T* const object = ::new (static_cast<void*>(storage)) T;
    const bool isZero =
        std::all_of(std::begin(storage), std::end(storage), [](std::byte each) { return each == std::byte{0}; });
    object->~T();
    return isZero;
}
}  // namespace

// The members that are defined as memory alone are of these types.
TEST(NeverDestroyed, emptyOwnersAreZeros)
{
    EXPECT_TRUE(isZeroAtFirst<Vn::ObjPtr<int>>());
    EXPECT_TRUE(isZeroAtFirst<Vn::Vector<char*>>());
}
