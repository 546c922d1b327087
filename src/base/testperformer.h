#pragma once

#include <base/osfilepath.h>
#include <base/profiler.h>

#include <cstdint>
#include <iosfwd>

namespace Vn
{

class TestGroup;

/// Times test groups under two clocks, by a list in a file, and tells the average of each:
///
///     TestPerformer::getInstance().execute(OsFilePath("groups.perf"));
///     std::cout << TestPerformer::getInstance();
///
/// A line of the list holds a group's name (47 characters at most), the number of cycles (not 0; a negative one runs
/// none), and up to 16 arguments, parted by blanks. Up to 128 lines with up to 255 characters; empty ones are
/// skipped. While it runs, and the standard error stream is a terminal, that shows how far it is. One thread.
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
