#pragma once

#include <base/baseexport.h>
#include <base/list.h>

namespace Vn
{

class LgQueue;

/// The queues that LgReader drains.
///
///     Vn::LgLog::setRegistry(Vn::ObjPtr<Vn::LgRegistry>(new LockedRegistry));
///
/// A program whose threads come and go brings a registry of its own, with a lock, or registers in the thread that
/// reads, as the library `threadlog` does. Owns no queue. The installed registry isn't destroyed when the process
/// ends, as a reader may be using it.
/// Tests: tests/base/lgregistrytest.cpp.
class VN_BASE_EXPORT LgRegistry
{
public:
    /// Leaves the queues alone.
    virtual ~LgRegistry();

    /// Makes `queue` known to the reader. Called by the thread layer, as a rule on the queue's own thread.
    virtual void registerQueue(LgQueue* queue) = 0;

    /// Makes the reader forget `queue`. Called by the reader before it deletes a queue whose thread has ended.
    virtual void deregisterQueue(LgQueue* queue) = 0;

    /// A copy, so that the reader can walk it while the registry changes. Where time stamps are equal, queues that
    /// stand earlier in the list win. The reader asks before each message.
    virtual List<LgQueue*> getQueueList() const = 0;
};

/// A registry without a lock: for programs that register all queues before the reader starts. LgLog::init() installs
/// one.
///
///     Vn::LgLog::getRegistry()->registerQueue(&queue);
///
/// Owns no queue. One thread at a time.
/// Tests: tests/base/lgregistrytest.cpp.
class VN_BASE_EXPORT LgSimpleRegistry : public LgRegistry
{
public:
    /// Lists no queue.
    LgSimpleRegistry();

    /// @{
    /// Lists the queues that `other` does.
    LgSimpleRegistry(LgSimpleRegistry const& other);
    LgSimpleRegistry& operator=(LgSimpleRegistry const& other);
    /// @}

    /// Leaves the queues alone.
    ~LgSimpleRegistry() override;

    /// Appends; a queue registered twice is listed twice.
    void registerQueue(LgQueue* queue) override;

    /// Removes every entry equal to `queue`; one that isn't listed is no error.
    void deregisterQueue(LgQueue* queue) override;

    /// In the order of registration.
    List<LgQueue*> getQueueList() const override;

private:
    List<LgQueue*> _queues;
};

}  // namespace Vn
