// The library's own registry.
//
// The reader asks for the list once for each message, since a thread may have registered meanwhile. Two things keep that from
// costing an allocation for each queue and message. A list that the reader has walked comes back to recycleQueueList(), and
// the next copy is made in its elements; so a registry that wraps this one, with a lock for instance, gains as well. And each
// state of the list has a version, by which the reader knows that it needs no copy at all.
#include <base/lgregistry.h>

#include <base/lgregistry_p.h>

#include <atomic>
#include <memory>
#include <new>
#include <utility>

namespace Vn
{
namespace
{
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
}  // namespace

LgRegistry::~LgRegistry() = default;

/// Relaxed: the numbers only have to differ.
void LgSimpleRegistry::Places::setChanged()
{
    static std::atomic<std::uint64_t> last = 0;
    _version = 1 + last.fetch_add(1, std::memory_order_relaxed);
}

LgSimpleRegistry::LgSimpleRegistry() : _places(new Places) {}

/// One by one: the copy's elements have places of their own.
LgSimpleRegistry::LgSimpleRegistry(LgSimpleRegistry const& other) : LgRegistry(other), _places(new Places)
{
    for (LgQueue* queue : other._queues)
        _places->pushBack(_queues, queue);
}

/// A list that is swapped keeps its elements where they are, so the copied places stay right. Unchanged if there is no memory.
LgSimpleRegistry& LgSimpleRegistry::operator=(LgSimpleRegistry const& other)
{
    LgSimpleRegistry copy(other);
    _queues.swap(copy._queues);
    std::swap(*_places, *copy._places);
    return *this;
}

LgSimpleRegistry::~LgSimpleRegistry() = default;

/// Intended: no test for a queue that is listed already. Do not mend.
void LgSimpleRegistry::registerQueue(LgQueue* queue)
{
    _places->pushBack(_queues, queue);
    _places->setChanged();
}

void LgSimpleRegistry::deregisterQueue(LgQueue* queue)
{
    _places->remove(_queues, queue);
    _places->setChanged();
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

std::uint64_t LgSimpleRegistry::getVersion() const
{
    return _places->getVersion();
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
