#include <base/hmheapmgr.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using Vn::HmHeapMgr;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::expectOutput;

static_assert(std::has_virtual_destructor_v<HmHeapMgr> && std::is_copy_constructible_v<HmHeapMgr>);
static_assert(HmHeapMgr::SafetySome == 0 && HmHeapMgr::SafetyFull == 1 && HmHeapMgr::SafetyDebug == 2);

namespace
{
using Environment = std::vector<std::pair<std::string, std::string>>;

char const* const variables[] = {
    "VN_HEAP_SAFETY_LEVEL",
    "VN_HEAP_OUTPUT_PROMPT",
    "VN_HEAP_CONTINUE_ON_UNRECOVERABLE_ERROR",
    "VN_HEAP_USE_DEFAULT_ERROR_HANDLER",
    "VN_HEAP_DUMP_INFO",
    "VN_HEAP_CHECK_MEMORY",
    "VN_HEAP_DUMP_LEAKS",
    "VN_HEAP_DO_DEFER_FREEING",
    "VN_HEAP_DEFER_QUEUE_LEN",
    "VN_HEAP_DEFER_SIZE_THRESHOLD",
    "VN_HEAP_CHECK_FREQUENCY",
};

const std::string banner = "*************** Default (compiler's) heap manager ***************\n"
                           "*****************************************************************\n";

/// What the settings of a fresh manager are: level, the seven flags, length, threshold, frequency.
std::string settings(HmHeapMgr const& heap)
{
    std::ostringstream text;
    text << heap.getSafetyLevel() << " " << heap.isOutput2Prompt() << heap.isContinueOnError()
         << heap.isUseDefaultErrorHandler() << heap.isDumpHeapInfo() << heap.isCheckAllMemory()
         << heap.isDumpLeaks() << heap.isDoDeferFreeing() << " " << heap.getDeferQueueLen() << " "
         << heap.getDeferSizeThreshold() << " " << heap.getCheckFrequency();
    return text.str();
}

ChildRun runWith(char const* body, Environment const& environment)
{
    Child child(body);
    for (char const* name : variables)
        child.without(name);
    for (auto const& [name, value] : environment)
        child.with(name, value);
    return child.run();
}
}  // namespace

VN_CHILD(heapSettings)
{
    std::cout << settings(HmHeapMgr());
    return 0;
}

TEST(HmHeapMgr, settingsAreThoseOfTheEnvironment)
{
    constexpr long longest = std::numeric_limits<long>::max();
    const struct
    {
        char const* what;
        Environment environment;
        std::string settings;
    } table[] = {
        {"nothing set", {}, "1 0000000 1000 4096 1000"},
        {"some", {{"VN_HEAP_SAFETY_LEVEL", "some"}}, "0 0000000 1000 4096 1000"},
        {"full", {{"VN_HEAP_SAFETY_LEVEL", "full"}}, "1 0000000 1000 4096 1000"},
        {"debug", {{"VN_HEAP_SAFETY_LEVEL", "debug"}}, "2 0000000 1000 4096 1000"},
        {"a capital", {{"VN_HEAP_SAFETY_LEVEL", "Full"}}, "1 0000000 1000 4096 1000"},
        {"a capital, too", {{"VN_HEAP_SAFETY_LEVEL", "Some"}}, "1 0000000 1000 4096 1000"},
        {"more than a word", {{"VN_HEAP_SAFETY_LEVEL", "debugger"}}, "1 0000000 1000 4096 1000"},
        {"part of a word", {{"VN_HEAP_SAFETY_LEVEL", "som"}}, "1 0000000 1000 4096 1000"},
        {"a blank before", {{"VN_HEAP_SAFETY_LEVEL", " some"}}, "1 0000000 1000 4096 1000"},
        {"a number", {{"VN_HEAP_SAFETY_LEVEL", "2"}}, "1 0000000 1000 4096 1000"},
        {"prompt", {{"VN_HEAP_OUTPUT_PROMPT", "1"}}, "1 1000000 1000 4096 1000"},
        {"continue", {{"VN_HEAP_CONTINUE_ON_UNRECOVERABLE_ERROR", "1"}}, "1 0100000 1000 4096 1000"},
        {"handler", {{"VN_HEAP_USE_DEFAULT_ERROR_HANDLER", "1"}}, "1 0010000 1000 4096 1000"},
        {"info", {{"VN_HEAP_DUMP_INFO", "1"}}, "1 0001000 1000 4096 1000"},
        {"check", {{"VN_HEAP_CHECK_MEMORY", "1"}}, "1 0000100 1000 4096 1000"},
        {"leaks", {{"VN_HEAP_DUMP_LEAKS", "1"}}, "1 0000010 1000 4096 1000"},
        {"defer", {{"VN_HEAP_DO_DEFER_FREEING", "1"}}, "1 0000001 1000 4096 1000"},
        {"defer 0", {{"VN_HEAP_DO_DEFER_FREEING", "0"}}, "1 0000000 1000 4096 1000"},
        {"flag 0", {{"VN_HEAP_DUMP_INFO", "0"}}, "1 0000000 1000 4096 1000"},
        {"flag yes", {{"VN_HEAP_DUMP_INFO", "yes"}}, "1 0000000 1000 4096 1000"},
        {"flag negative", {{"VN_HEAP_DUMP_INFO", "-1"}}, "1 0000000 1000 4096 1000"},
        {"flag 2 and more", {{"VN_HEAP_DUMP_INFO", " +2x"}}, "1 0001000 1000 4096 1000"},
        {"flag hexadecimal", {{"VN_HEAP_DUMP_INFO", "0x1"}}, "1 0000000 1000 4096 1000"},
        {"flag huge", {{"VN_HEAP_DUMP_INFO", "99999999999999999999"}}, "1 0001000 1000 4096 1000"},
        {"length", {{"VN_HEAP_DEFER_QUEUE_LEN", "7"}}, "1 0000000 7 4096 1000"},
        {"length no number", {{"VN_HEAP_DEFER_QUEUE_LEN", "many"}}, "1 0000000 0 4096 1000"},
        {"length negative",
         {{"VN_HEAP_DEFER_QUEUE_LEN", "-1"}},
         "1 0000000 " + std::to_string(std::numeric_limits<unsigned long>::max()) + " 4096 1000"},
        {"length of a long",
         {{"VN_HEAP_DEFER_QUEUE_LEN", std::to_string(longest)}},
         "1 0000000 " + std::to_string(longest) + " 4096 1000"},
        {"length huge",
         {{"VN_HEAP_DEFER_QUEUE_LEN", "99999999999999999999"}},
         "1 0000000 " + std::to_string(longest) + " 4096 1000"},
        {"threshold", {{"VN_HEAP_DEFER_SIZE_THRESHOLD", "2147483647"}}, "1 0000000 1000 2147483647 1000"},
        {"frequency", {{"VN_HEAP_CHECK_FREQUENCY", "0"}}, "1 0000000 1000 4096 0"},
        {"frequency negative", {{"VN_HEAP_CHECK_FREQUENCY", "-1"}}, "1 0000000 1000 4096 4294967295"},
        {"frequency huge", {{"VN_HEAP_CHECK_FREQUENCY", "99999999999999999999"}}, "1 0000000 1000 4096 2147483647"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(runWith("heapSettings", row.environment).out, row.settings);
    }
    Environment all;
    for (char const* name : variables)
        all.emplace_back(name, "1");
    EXPECT_EQ(runWith("heapSettings", all).out, "1 1111111 1 1 1");
}

TEST(HmHeapMgr, settersHandBackTheFormerValue)
{
    HmHeapMgr heap;
    EXPECT_EQ(heap.setSafetyLevel(HmHeapMgr::SafetyDebug), HmHeapMgr::SafetyFull);
    EXPECT_EQ(heap.setSafetyLevel(HmHeapMgr::SafetySome), HmHeapMgr::SafetyDebug);
    EXPECT_EQ(heap.getSafetyLevel(), HmHeapMgr::SafetySome);

    const struct
    {
        bool (HmHeapMgr::*set)(bool);
        bool (HmHeapMgr::*get)() const;
    } flags[] = {
        {&HmHeapMgr::setContinueOnError, &HmHeapMgr::isContinueOnError},
        {&HmHeapMgr::setUseDefaultHandler, &HmHeapMgr::isUseDefaultErrorHandler},
        {&HmHeapMgr::setDumpHeapInfo, &HmHeapMgr::isDumpHeapInfo},
        {&HmHeapMgr::setCheckAllMemory, &HmHeapMgr::isCheckAllMemory},
        {&HmHeapMgr::setDumpLeaks, &HmHeapMgr::isDumpLeaks},
        {&HmHeapMgr::setDoDeferFreeing, &HmHeapMgr::isDoDeferFreeing},
    };
    for (auto const& flag : flags) {
        EXPECT_FALSE((heap.*flag.set)(true));
        EXPECT_TRUE((heap.*flag.get)());
        EXPECT_TRUE((heap.*flag.set)(false));
        EXPECT_FALSE((heap.*flag.get)());
        (heap.*flag.set)(true);
    }

    EXPECT_EQ(heap.setDeferQueueLen(1), 1000u);
    EXPECT_EQ(heap.setDeferQueueLen(2), 1u);
    EXPECT_EQ(heap.setDeferSizeThreshold(3), 4096u);
    EXPECT_EQ(heap.setDeferSizeThreshold(4), 3u);
    EXPECT_EQ(heap.setCheckFrequency(5), 1000u);
    EXPECT_EQ(heap.setCheckFrequency(6), 5u);
    EXPECT_EQ(settings(heap), "0 0111111 2 4 6");

    const HmHeapMgr copy(heap);
    HmHeapMgr assigned;
    assigned = heap;
    heap.setDeferQueueLen(9);
    EXPECT_EQ(settings(copy), "0 0111111 2 4 6");
    EXPECT_EQ(settings(assigned), "0 0111111 2 4 6");
}

TEST(HmHeapMgr, takesAnyPointerForValidAndStoresNoCheckPoint)
{
    HmHeapMgr heap;
    int object = 0;
    EXPECT_TRUE(heap.isValid(nullptr, 0, HmHeapMgr::PtrType()));
    EXPECT_TRUE(heap.isValid(&object, 1000, HmHeapMgr::PtrType()));
    EXPECT_EQ(heap.setCheckPoint(7), 0u);
    EXPECT_EQ(heap.setCheckPoint(8), 0u);
}

TEST(HmHeapMgr, whatItCannotDoItLeaves)
{
    HmHeapMgr heap;
    const std::string before = settings(heap);
    int object = 41;
    heap.breakpoint();
    heap.checkHeap();
    heap.freeDeferred();
    heap.initMultiThread();
    heap.protectPtr(&object, HmHeapMgr::PtrProtect());
    heap.reportLeakage(0, 100);
    ++object;
    EXPECT_EQ(object, 42);
    EXPECT_EQ(settings(heap), before);
}

TEST(HmHeapMgr, reportsSayWhichHeapItIs)
{
    const HmHeapMgr heap;
    std::ostringstream dump, pointer, stats;
    heap.dump(dump);
    heap.dumpPtrInfo(nullptr, pointer);
    heap.dumpMallocStats(stats);
    EXPECT_EQ(dump.str(), banner);
    EXPECT_EQ(pointer.str(), "Ptr info not available with compiler's heap\n");
    EXPECT_EQ(stats.str(), "Malloc stats not available with compiler's heap\n");
}

VN_CHILD(heapLife)
{
    const auto look = [] { HmHeapMgr::getInstance(); };
    VnTest::report("before", look);
    VnTest::NumberedPackage<1> client("client", {Vn::InInit<VnInit::heapMgr>::getType()});
    client.onStart = [&] { VnTest::report("in between", look); };
    client.onStop = client.onStart;
    VnTest::start();
    HmHeapMgr::getInstance().setCheckFrequency(3);
    std::cout << HmHeapMgr::getInstance().getCheckFrequency() << "\n";
    VnTest::stop();
    VnTest::report("after", look);
    return 0;
}

TEST(HmHeapMgr, livesFromTheStartOfItsPackageToTheStop)
{
    const std::string name = typeid(Vn::InSingleton<HmHeapMgr>).name();
    const std::string out = "before: " + name +
                            " is not initialized.\n"
                            "start client\nin between: ok\n3\nstop client\nin between: ok\nafter: " +
                            name + " is not initialized.\n";
    const ChildRun run = runWith("heapLife", {});
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(runWith("heapLife", {{"VN_HEAP_DUMP_INFO", "0"}}).out, out);
    const std::string toldOf = runWith("heapLife", {{"VN_HEAP_DUMP_INFO", "1"}}).out;
    EXPECT_EQ(toldOf, out.substr(0, out.find("start client")) + banner + out.substr(out.find("start client")));
}
