// Private to lgreader.cpp and lgregistry.cpp.
#pragma once

#include <base/lgregistry.h>
#include <base/listplaces_p.h>

#include <cstdint>

namespace Vn
{

/// Where the queues stand in a registry's list, and which state of the list that is.
class LgSimpleRegistry::Places : public ListPlaces<LgQueue*>
{
public:
    Places() { setChanged(); }

    /// A number that no other state of a list has, of this registry or of another one. So a walk that finds the same number
    /// again knows the list already.
    std::uint64_t getVersion() const { return _version; }

    void setChanged();

private:
    std::uint64_t _version;
};

/// Takes a list back that getQueueList() has returned. Its elements serve the next call, which then allocates nothing. Any
/// thread may call it; a list that isn't given back is freed like any other.
void recycleQueueList(List<LgQueue*>& queues);

}  // namespace Vn
