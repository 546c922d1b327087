#pragma once

#include <base/osfilepath.h>
#include <base/profiler.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

class TestGroup;

/// Times the test groups of a list under two clocks and prints their average times:
///
///     TestPerformer::getInstance().execute(OsFilePath("groups.perf"));
///     std::cout << TestPerformer::getInstance();
///
/// A line of the list holds a group's name (at most 47 characters), the number of cycles (not 0; a negative number
/// runs none) and up to 16 arguments, separated by blanks. A list has at most 128 lines of at most 255 characters;
/// empty lines are skipped.
///
///     sorting 20 1000    // 20 cycles of the group "sorting", each with the argument "1000"
///
/// If standard error is a terminal, it shows the progress. One thread.
/// Tests: tests/base/testperformertest.cpp.
class VN_BASE_EXPORT TestPerformer
{
public:
    /// Made at the first call, never destroyed.
    static TestPerformer& getInstance();

    /// @{
    /// Copies share the texts of the arguments, which the first one that is destroyed or executes a list frees.
    TestPerformer(TestPerformer const&) = default;
    TestPerformer& operator=(TestPerformer const&) = default;
    /// @}
    ~TestPerformer();

    /// Reads the list and runs it; what an earlier list held is freed. Only the groups' execute() is timed: by the
    /// hardware counter, or by the time of day where that makes an average of over 30 seconds. Throws ExInternalError
    /// for a list that can't be read or holds an error, and lets out what a group throws.
    void execute(OsFilePath const& path);

    /// The table of the last run.
    friend VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, TestPerformer const& performer);

private:
    static constexpr int groupLimit = 128;
    static constexpr int nameSize = 48;
    static constexpr int argumentLimit = 16;

    struct Group
    {
        char name[nameSize];
        TestGroup* group;
        std::int32_t nbCycles;
        std::int32_t argc;
        char* argv[argumentLimit];  ///< owned
        double averageTime;         ///< seconds
    };

    TestPerformer();

    void loadFile(char const* path);
    void dropGroups();
    void readLine(char* line);
    void readWord(Group& group, int number, char const* word);
    void runCycle(Group& group, int cycle);

    void start();
    void stop();
    void endCycle();
    void reset();

    Group _groups[groupLimit];
    std::int32_t _groupCount;
    Profiler<HwIntervalTimer> _hwProfiler;
    Profiler<TodIntervalTimer> _todProfiler;
};

}  // namespace Vn
