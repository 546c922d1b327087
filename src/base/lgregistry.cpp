#include <base/lgregistry.h>

#include <base/listplaces_p.h>

#include <utility>

namespace Vn
{

LgRegistry::~LgRegistry() = default;

class LgSimpleRegistry::Places : public ListPlaces<LgQueue*>
{};

LgSimpleRegistry::LgSimpleRegistry() : _places(new Places) {}

LgSimpleRegistry::LgSimpleRegistry(LgSimpleRegistry const& other) : LgRegistry(other), _places(new Places)
{
    for (LgQueue* queue : other._queues)
        _places->pushBack(_queues, queue);
}

LgSimpleRegistry& LgSimpleRegistry::operator=(LgSimpleRegistry const& other)
{
    LgSimpleRegistry copy(other);
    _queues.swap(copy._queues);
    std::swap(*_places, *copy._places);
    return *this;
}

LgSimpleRegistry::~LgSimpleRegistry() = default;

void LgSimpleRegistry::registerQueue(LgQueue* queue)
{
    _places->pushBack(_queues, queue);
}

void LgSimpleRegistry::deregisterQueue(LgQueue* queue)
{
    _places->remove(_queues, queue);
}

List<LgQueue*> LgSimpleRegistry::getQueueList() const
{
    return _queues;
}

}  // namespace Vn
