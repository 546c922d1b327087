// Private to lgreader.cpp and lgregistry.cpp.
#pragma once

#include <base/lgregistry.h>

#include <cstdint>

namespace Vn
{

/// The changes of all registries that are an LgSimpleRegistry so far. So a walk that finds the number as it was, and the same
/// registry, knows the list already. Any thread may ask.
std::uint64_t getRegistryChanges();

/// Takes a list back that getQueueList() has returned. Its elements serve the next call, which then allocates nothing. Any
/// thread may call it; a list that isn't given back is freed like any other.
void recycleQueueList(List<LgQueue*>& queues);

}  // namespace Vn
