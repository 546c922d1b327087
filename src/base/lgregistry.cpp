#include <base/lgregistry.h>

#include <base/listplaces_p.h>

#include <utility>

namespace Vn
{

LgRegistry::~LgRegistry() = default;

/// Behind a pointer, so that the class keeps the layout of its one list.
class LgSimpleRegistry::Places : public ListPlaces<LgQueue*>
{};

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
}

void LgSimpleRegistry::deregisterQueue(LgQueue* queue)
{
    _places->remove(_queues, queue);
}

/// By value: the reader walks it while queues register and leave.
List<LgQueue*> LgSimpleRegistry::getQueueList() const
{
    return _queues;
}

}  // namespace Vn
