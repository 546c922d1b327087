// Performance runs: a list file names groups, each runs a number of cycles under two clocks, and a table shows the
// averages.
//
// loadFile() fills the records line by line; execute() then takes each record in turn. Only the group's execute()
// lies between start() and stop(): texts are formed and printed outside, so that they don't count. After each record
// the profilers are reset, so that it has figures of its own.
//
// The table shows the hardware counter's average, or that of the time of day if it is above 30 s. A wrong line ends
// the run with an exception and leaves the records before it as they are: the destructor and the next load count on
// `_groupCount` to free what they own.
#include <base/testperformer.h>

#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/osfsutils.h>
#include <base/testgroup.h>
#include <base/testprogress_p.h>
#include <base/trace.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/testperformer";
constexpr std::streamsize lineSize = 256;  ///< with the terminator
constexpr std::size_t wordLimit = 128;     ///< from here on a message leaves the word out
constexpr double longRunSeconds = 30.0;    ///< above this average the time of day is taken

TraceLevel const& traceLevel()
{
    static TraceLevel const& level = *Trace::registerLevel("TestPerformer", sourceName);
    return level;
}

/// Registers the level before `main`, so that a program's list of levels shows it.
[[maybe_unused]] TraceLevel const& registeredLevel = traceLevel();

/// Traced as well as thrown: the driver reports the text alone, the trace has the place.
[[noreturn]] void refuse(int line, std::string const& text)
{
    const ExInternalError error(sourceName, line, text.c_str());
    TraceManager::getInstance().getTrace().printException(error, sourceName, line);
    throw error;
}

/// Intended: a word of 128 characters or more is left out, and the text then ends in "<"; programs compare it. Do not
/// mend.
[[noreturn]] void refuseWord(int line, std::string text, char const* word)
{
    if (std::strlen(word) < wordLimit)
        text += std::string(word) + ">.";
    refuse(line, text);
}

/// As `atoi`, but the nearest limit for a number beyond an `int`, where atoi() promises nothing.
int toNumber(char const* word)
{
    return static_cast<int>(std::clamp<long>(std::strtol(word, nullptr, 10), INT_MIN, INT_MAX));
}

/// Not by way of Trace::isEnabled(): these texts show whatever is on.
void print(std::ostringstream const& stream)
{
    TraceManager::getInstance().print(stream.str().c_str());
}
}  // namespace

/// With parentheses, so that all records are zero: a line without a number of cycles takes up what its record holds.
TestPerformer::TestPerformer() : _groups(), _groupCount(0) {}

/// For copies: the one instance is never destroyed.
TestPerformer::~TestPerformer()
{
    dropGroups();
}

/// Never destroyed: a static object may still print the table.
TestPerformer& TestPerformer::getInstance()
{
    static TestPerformer& performer = *new TestPerformer;
    return performer;
}

/// On Linux a directory opens and then reads like an empty file, hence the question for it.
///
/// Intended: the limit of groups is tested before the line is looked at, so an empty line behind the last group is
/// one too many; and a line that is too long is parsed as far as it was read and ends the file, without a message.
/// Lists depend on both; do not mend.
void TestPerformer::loadFile(char const* path)
{
    const Trace::Entry entry(TraceManager::getInstance().getTrace(), traceLevel(), "TestPerformer::loadFile()",
                             sourceName, __LINE__);
    std::ifstream stream;
    do {
        errno = 0;
        stream.open(path);
    } while (!stream && errno == EINTR);
    if (!stream || OsFsUtils::isDirectory(path))
        refuseWord(__LINE__, "Invalid file name : <", path);
    dropGroups();
    char line[lineSize];
    stream.getline(line, lineSize);
    // A last line without a line end leaves the stream at its end but the buffer filled.
    while (stream.good() || line[0] != '\0') {
        if (_groupCount == groupLimit)
            refuse(__LINE__, "Too many test groups in file.");
        readLine(line);
        line[0] = '\0';
        if (!stream.eof())
            stream.getline(line, lineSize);
    }
    // Half a list is none: whoever compares times would miss the rest.
    if (stream.bad())
        refuseWord(__LINE__, "Invalid file name : <", path);
}

/// Frees the arguments and counts from 0 again.
///
/// Intended: the records keep their numbers of cycles, and a line without one takes up what its record had. Do not
/// mend.
void TestPerformer::dropGroups()
{
    for (std::int32_t i = 0; i < _groupCount; ++i) {
        for (std::int32_t k = 0; k < _groups[i].argc; ++k)
            delete[] _groups[i].argv[k];
    }
    _groupCount = 0;
}

/// The blank is the only separator: a line with tabs is one word. strtok() writes into `line` and passes over several
/// blanks at once.
void TestPerformer::readLine(char* line)
{
    Group& group = _groups[_groupCount];
    group.argc = 0;
    int number = 0;  // of the word: name, cycles, arguments
    for (char* word = std::strtok(line, " "); word != nullptr; word = std::strtok(nullptr, " "))
        readWord(group, number++, word);
    // Intended: behind 16 arguments the null pointer belongs into the next field, which is the average. As zeros that
    // is 0.0, written here without running past the array; execute() overwrites it. Do not mend.
    if (group.argc < argumentLimit)
        group.argv[group.argc] = nullptr;
    else
        group.averageTime = 0.0;
}

/// Intended: the record counts as soon as its name is known, before the rest of the line has been read; a wrong
/// number leaves it in. Do not mend.
void TestPerformer::readWord(Group& group, int number, char const* word)
{
    if (number == 0) {
        if (std::strlen(word) + 1 > sizeof group.name)
            refuseWord(__LINE__, "Test group name is too long: <", word);
        std::strcpy(group.name, word);
        group.group = TestGroup::getInstance(word);
        if (group.group == nullptr)
            refuseWord(__LINE__, "Invalid test group name: <", word);
        ++_groupCount;
    } else if (number == 1) {
        group.nbCycles = toNumber(word);
        if (group.nbCycles == 0)
            refuseWord(__LINE__, "Invalid number of cycles: <", word);
    } else {
        if (group.argc == argumentLimit)
            refuse(__LINE__, "Too many args to test group.");
        group.argv[group.argc] = duplicateString(word).release();
        ++group.argc;
    }
}

/// A record with a negative number of cycles doesn't run and shows the average of an empty profiler.
void TestPerformer::execute(OsFilePath const& path)
{
    loadFile(path.getChars());
    reset();
    TestProgress progress;  // blanks its line out at the end, also after an exception
    for (std::int32_t i = 0; i < _groupCount; ++i) {
        Group& group = _groups[i];
        for (std::int32_t cycle = 0; cycle < group.nbCycles; ++cycle) {
            progress.show(group.name, cycle, group.nbCycles);
            runCycle(group, cycle);
        }
        const double timeOfDay = _todProfiler.averageTime();
        group.averageTime = timeOfDay > longRunSeconds ? timeOfDay : _hwProfiler.averageTime();
        reset();
    }
}

/// prepare(), terminate() and dump() are outside the time. The trace output gets these texts whatever levels are on.
void TestPerformer::runCycle(Group& group, int cycle)
{
    group.group->prepare(group.argc, group.argv);
    std::ostringstream before;
    before << "Executing " << group.name << " cycle " << cycle << " ";
    for (std::int32_t i = 0; i < group.argc; ++i)
        before << group.argv[i] << " ";
    print(before);

    start();
    group.group->execute(group.argc, group.argv);
    stop();
    endCycle();

    std::ostringstream after;
    after << "End of cycle.  Call terminate.\n_todProfiler\n"
          << _todProfiler << "\n_hwProfiler\n"
          << _hwProfiler << "\n";
    print(after);
    group.group->terminate();
    // An empty dump prints nothing.
    std::ostringstream dumped;
    group.group->dump(dumped);
    print(dumped);
}

/// In all four the hardware counter comes first, so both clocks measure the same span but for one call.
void TestPerformer::start()
{
    _hwProfiler.start();
    _todProfiler.start();
}

void TestPerformer::stop()
{
    _hwProfiler.stop();
    _todProfiler.stop();
}

void TestPerformer::endCycle()
{
    _hwProfiler.endCycle();
    _todProfiler.endCycle();
}

void TestPerformer::reset()
{
    _hwProfiler.reset();
    _todProfiler.reset();
}

/// A row is cut to 255 characters, arguments included. snprintf() keeps the columns whatever state the stream is in.
std::ostream& operator<<(std::ostream& stream, TestPerformer const& performer)
{
    stream << "\n\n"
              "Group Name              nbCycles   average time    options\n"
              "----------              --------   ------------    -------\n\n\n";
    for (std::int32_t i = 0; i < performer._groupCount; ++i) {
        TestPerformer::Group const& group = performer._groups[i];
        char row[256];
        std::snprintf(row, sizeof row, "%-24s %7d %14f    ", group.name, static_cast<int>(group.nbCycles),
                      group.averageTime);
        std::string text = row;
        for (std::int32_t k = 0; k < group.argc; ++k)
            text += std::string(group.argv[k]) + " ";
        stream << text.substr(0, sizeof row - 1) << "\n";
    }
    return stream << "\n";
}

}  // namespace Vn
