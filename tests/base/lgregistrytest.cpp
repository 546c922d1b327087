#include <base/lgregistry.h>

#include <base/lgqueue.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

using Vn::LgQueue;
using Vn::LgSimpleRegistry;
using Vn::List;

TEST(LgSimpleRegistry, listsQueuesInTheOrderOfRegistration)
{
    LgQueue one, two;
    LgSimpleRegistry registry;
    EXPECT_TRUE(registry.getQueueList().empty());
    registry.registerQueue(&two);
    registry.registerQueue(&one);
    EXPECT_EQ(registry.getQueueList(), (List<LgQueue*>{&two, &one}));
}

TEST(LgSimpleRegistry, aQueueRegisteredTwiceIsListedTwiceAndRemovedAtOnce)
{
    LgQueue one, two;
    LgSimpleRegistry registry;
    for (LgQueue* queue : {&one, &two, &one})
        registry.registerQueue(queue);
    EXPECT_EQ(registry.getQueueList(), (List<LgQueue*>{&one, &two, &one}));
    registry.deregisterQueue(&one);
    EXPECT_EQ(registry.getQueueList(), List<LgQueue*>{&two});
    registry.deregisterQueue(&one);  // no longer there
    EXPECT_EQ(registry.getQueueList(), List<LgQueue*>{&two});
}

TEST(LgSimpleRegistry, aListIsACopyAndSoIsARegistry)
{
    LgQueue queue;
    LgSimpleRegistry registry;
    registry.registerQueue(&queue);
    const List<LgQueue*> list = registry.getQueueList();
    LgSimpleRegistry copy(registry), assigned;
    assigned = registry;
    LgQueue other;
    assigned.registerQueue(&other);
    assigned = registry;
    registry.deregisterQueue(&queue);
    EXPECT_EQ(list.size(), 1u);
    EXPECT_EQ(copy.getQueueList().size(), 1u);
    EXPECT_EQ(assigned.getQueueList().size(), 1u);
    EXPECT_TRUE(registry.getQueueList().empty());
}

TEST(LgSimpleRegistry, aQueueOfAFormerRegistryIsAbsentFromOneInItsPlace)
{
    LgQueue one, two;
    std::optional<LgSimpleRegistry> registry;
    for (int i = 0; i < 2; ++i) {
        registry.emplace();
        registry->deregisterQueue(&one);
        EXPECT_TRUE(registry->getQueueList().empty());
        registry->registerQueue(&two);
        registry->deregisterQueue(&one);
        EXPECT_EQ(registry->getQueueList(), List<LgQueue*>{&two});
        registry->registerQueue(&one);
        EXPECT_EQ(registry->getQueueList(), (List<LgQueue*>{&two, &one}));
    }
}

TEST(LgSimpleRegistry, registriesOfSeveralThreadsAreTheirOwn)
{
    std::vector<std::string> problems(4);
    {
        std::vector<std::thread> threads;
        for (std::string& problem : problems)
            threads.emplace_back([&problem] {
                LgQueue one, two;
                for (int i = 0; i < 500; ++i) {
                    LgSimpleRegistry registry, other;
                    for (LgQueue* queue : {&one, &two, &one}) {
                        registry.registerQueue(queue);
                        other.registerQueue(queue);
                    }
                    registry.deregisterQueue(&one);
                    other.deregisterQueue(&two);
                    if (registry.getQueueList() != List<LgQueue*>{&two})
                        problem = "the one";
                    if (other.getQueueList() != (List<LgQueue*>{&one, &one}))
                        problem = "the other";
                }
            });
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(problems, std::vector<std::string>(4));
}

TEST(LgSimpleRegistry, queuesLeaveACopyAsTheyLeaveTheFirst)
{
    LgQueue one, two, three;
    LgSimpleRegistry registry;
    for (LgQueue* queue : {&one, &two, &three, &two})
        registry.registerQueue(queue);
    LgSimpleRegistry copy(registry);
    LgSimpleRegistry& same = copy;
    copy = same;
    for (LgSimpleRegistry* each : {&registry, &copy}) {
        each->deregisterQueue(&two);
        EXPECT_EQ(each->getQueueList(), (List<LgQueue*>{&one, &three}));
        each->registerQueue(&two);
        each->deregisterQueue(&one);
        EXPECT_EQ(each->getQueueList(), (List<LgQueue*>{&three, &two}));
    }
}
