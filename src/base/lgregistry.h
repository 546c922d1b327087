#pragma once

#include <base/baseexport.h>
#include <base/list.h>
#include <base/objptr.h>

namespace Vn
{

class LgQueue;

/// The queues that LgReader drains. A program whose threads come and go brings a registry of its own, with a lock, by
/// LgLog::setRegistry(); `examples/threadlog` has one. The one that is installed isn't destroyed when the process ends, as
/// a reader may be using it.
/// Tests: tests/base/lgregistrytest.cpp.
class VN_BASE_EXPORT LgRegistry
{
public:
    virtual ~LgRegistry();

    virtual void registerQueue(LgQueue* queue) = 0;
    virtual void deregisterQueue(LgQueue* queue) = 0;

    /// A copy, so that the reader can walk it while the registry changes. Earlier queues win where stamps are equal.
    virtual List<LgQueue*> getQueueList() const = 0;
};

/// A registry without a lock: for programs that register all queues before the reader starts.
///
/// Owns no queue.
/// Tests: tests/base/lgregistrytest.cpp.
class VN_BASE_EXPORT LgSimpleRegistry : public LgRegistry
{
public:
    LgSimpleRegistry();
    LgSimpleRegistry(LgSimpleRegistry const& other);
    LgSimpleRegistry& operator=(LgSimpleRegistry const& other);
    ~LgSimpleRegistry() override;

    /// Appends; a queue registered twice is listed twice.
    void registerQueue(LgQueue* queue) override;

    /// Removes the queue wherever it stands; one that isn't listed is no error.
    void deregisterQueue(LgQueue* queue) override;

    List<LgQueue*> getQueueList() const override;

private:
    class Places;

    List<LgQueue*> _queues;

    ObjPtr<Places> _places;  ///< so that a queue leaves without a walk through the others
};

}  // namespace Vn
