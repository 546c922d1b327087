// The library's own registry.
//
// The reader asks for the list once for each message, since a thread may have registered meanwhile. Two things keep that from
// costing an allocation for each queue and message. A list that the reader has walked comes back to recycleQueueList(), and
// the next copy is made in its elements; so a registry that wraps this one, with a lock for instance, gains as well. And all
// changes of the library's registries are counted, by which the reader knows that it needs no copy at all.
//
// A queue leaves without a walk through the others, as its place in the list is known (listplaces_p.h). A registry's layout is
// part of the interface and has no room for these places, so they stand here, by the registry's address. A registry belongs to
// one thread at a time, but several of them may be at work; no lock is needed, as only the slots themselves are shared.
#include <base/lgregistry.h>

#include <base/lgregistry_p.h>
#include <base/listplaces_p.h>

#include <atomic>
#include <memory>
#include <new>
#include <utility>

namespace Vn
{
namespace
{
// model: tests/models/spare.pml.

/// A list that was given back; null while a thread uses it or before there is one. Never freed: a reader may be at work while
/// the process ends.
std::atomic<List<LgQueue*>*> spareList = nullptr;

/// Acquire, and release in putSpare(): without them this thread could take a list before its elements are complete.
std::unique_ptr<List<LgQueue*>> takeSpare()
{
    return std::unique_ptr<List<LgQueue*>>(spareList.exchange(nullptr, std::memory_order_acquire));
}

void putSpare(std::unique_ptr<List<LgQueue*>> list)
{
    // Acquire as well, for the list that another thread has put there meanwhile: it is freed here.
    delete spareList.exchange(list.release(), std::memory_order_acq_rel);
}

/// Relaxed here and in getRegistryChanges(): who reads a registry that another thread has changed waits for that thread anyhow,
/// and then finds the number of that change, or a later one.
std::atomic<std::uint64_t> changes = 0;

void setChanged()
{
    changes.fetch_add(1, std::memory_order_relaxed);
}

using Places = ListPlaces<LgQueue*>;

/// The places of one registry's queues. Taken by the registry's first queue and given back at the registry's end; never freed,
/// as static registries may be destroyed behind all else. As many exist as there were registries at a time, so as a rule one or
/// two, which a walk finds.
struct PlacesSlot
{
    std::atomic<LgRegistry const*> owner;  ///< null while the slot is free
    Places places;                         ///< the owner's thread alone uses them
    PlacesSlot* next;
};

// model: tests/models/slots.pml.
std::atomic<PlacesSlot*> firstSlot = nullptr;

/// The first slot with that owner, or null. Acquire: without it this thread could see a slot before the slot is complete.
PlacesSlot* findSlot(LgRegistry const* owner)
{
    PlacesSlot* slot = firstSlot.load(std::memory_order_acquire);
    while (slot != nullptr && slot->owner.load(std::memory_order_relaxed) != owner)
        slot = slot->next;
    return slot;
}

/// A slot for a registry that has none. Another thread may do the same for its own registry, and take what was found.
PlacesSlot& takeSlot(LgRegistry const& owner)
{
    while (PlacesSlot* const free = findSlot(nullptr)) {
        LgRegistry const* expected = nullptr;
        // Acquire, and release in dropPlaces(): without them this thread could still see what the last owner's places were.
        if (free->owner.compare_exchange_strong(expected, &owner, std::memory_order_acquire,
                                                std::memory_order_relaxed))
            return *free;
    }
    auto* const slot = new PlacesSlot{&owner, {}, firstSlot.load(std::memory_order_relaxed)};
    while (!firstSlot.compare_exchange_weak(slot->next, slot, std::memory_order_release, std::memory_order_relaxed))
        ;
    return *slot;
}

Places& placesOf(LgRegistry const& registry)
{
    PlacesSlot* const slot = findSlot(&registry);
    return slot != nullptr ? slot->places : takeSlot(registry).places;
}

void dropPlaces(LgRegistry const& registry) noexcept
{
    PlacesSlot* const slot = findSlot(&registry);
    if (slot == nullptr)
        return;
    slot->places = {};
    slot->owner.store(nullptr, std::memory_order_release);
}
}  // namespace

LgRegistry::~LgRegistry() = default;

/// A change: the registry may stand where another one stood before.
LgSimpleRegistry::LgSimpleRegistry()
{
    setChanged();
}

/// One by one: the copy's elements have places of their own.
LgSimpleRegistry::LgSimpleRegistry(LgSimpleRegistry const& other) : LgRegistry(other)
{
    setChanged();
    try {
        for (LgQueue* queue : other._queues)
            LgSimpleRegistry::registerQueue(queue);
    } catch (...) {
        dropPlaces(*this);
        throw;
    }
}

/// A list that is swapped keeps its elements where they are, so the copied places stay right. Unchanged if there is no memory.
LgSimpleRegistry& LgSimpleRegistry::operator=(LgSimpleRegistry const& other)
{
    LgSimpleRegistry copy(other);
    std::swap(placesOf(*this), placesOf(copy));
    _queues.swap(copy._queues);
    setChanged();
    return *this;
}

LgSimpleRegistry::~LgSimpleRegistry()
{
    dropPlaces(*this);
}

/// Intended: no test for a queue that is listed already. Do not mend.
void LgSimpleRegistry::registerQueue(LgQueue* queue)
{
    placesOf(*this).pushBack(_queues, queue);
    setChanged();
}

/// Needs no memory, so the reader can always put a queue away.
void LgSimpleRegistry::deregisterQueue(LgQueue* queue)
{
    if (PlacesSlot* const slot = findSlot(this))
        slot->places.remove(_queues, queue);
    setChanged();
}

/// By value: the reader walks it while queues register and leave.
List<LgQueue*> LgSimpleRegistry::getQueueList() const
{
    List<LgQueue*> copy;
    if (std::unique_ptr<List<LgQueue*>> spare = takeSpare()) {
        copy.swap(*spare);
        putSpare(std::move(spare));  // the empty list itself serves again, too
    }
    copy.assign(_queues.begin(), _queues.end());
    return copy;
}

std::uint64_t getRegistryChanges()
{
    return changes.load(std::memory_order_relaxed);
}

/// Without memory for the list itself, its elements are freed.
void recycleQueueList(List<LgQueue*>& queues)
{
    std::unique_ptr<List<LgQueue*>> spare = takeSpare();
    if (spare == nullptr)
        spare.reset(new (std::nothrow) List<LgQueue*>);
    if (spare == nullptr)
        return;
    spare->swap(queues);
    putSpare(std::move(spare));
}

}  // namespace Vn
