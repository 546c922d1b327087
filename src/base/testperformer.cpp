#include <base/testperformer.h>

#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/osfsutils.h>
#include <base/testgroup.h>
#include <base/testprogress_p.h>
#include <base/trace.h>

#include <algorithm>
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
constexpr std::streamsize lineSize = 256;
constexpr std::size_t wordLimit = 128;  ///< from here on a message leaves the word out
constexpr double longRunSeconds = 30.0;

TraceLevel const& traceLevel()
{
    static TraceLevel const& level = *Trace::registerLevel("TestPerformer", sourceName);
    return level;
}

[[maybe_unused]] TraceLevel const& registeredLevel = traceLevel();

[[noreturn]] void refuse(int line, std::string const& text)
{
    const ExInternalError error(sourceName, line, text.c_str());
    TraceManager::getInstance().getTrace().printException(error, sourceName, line);
    throw error;
}

/// `text` ends in "<".
[[noreturn]] void refuseWord(int line, std::string text, char const* word)
{
    if (std::strlen(word) < wordLimit)
        text += std::string(word) + ">.";
    refuse(line, text);
}

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

// Without parentheses the records would hold whatever the memory held.
TestPerformer::TestPerformer() : _groups(), _groupCount(0) {}

TestPerformer::~TestPerformer()
{
    dropGroups();
}

TestPerformer& TestPerformer::getInstance()
{
    static TestPerformer& performer = *new TestPerformer;
    return performer;
}

void TestPerformer::loadFile(char const* path)
{
    const Trace::Entry entry(TraceManager::getInstance().getTrace(), traceLevel(), "TestPerformer::loadFile()",
                             sourceName, __LINE__);
    std::ifstream stream(path);
    if (!stream || OsFsUtils::isDirectory(path))
        refuseWord(__LINE__, "Invalid file name : <", path);
    dropGroups();
    char line[lineSize];
    stream.getline(line, lineSize);
    while (stream.good() || line[0] != '\0') {
        if (_groupCount == groupLimit)
            refuse(__LINE__, "Too many test groups in file.");
        readLine(line);
        line[0] = '\0';
        if (!stream.eof())
            stream.getline(line, lineSize);
    }
}

/// The records keep their numbers of cycles, which lines without one take up.
void TestPerformer::dropGroups()
{
    for (std::int32_t i = 0; i < _groupCount; ++i) {
        for (std::int32_t k = 0; k < _groups[i].argc; ++k)
            delete[] _groups[i].argv[k];
    }
    _groupCount = 0;
}

void TestPerformer::readLine(char* line)
{
    Group& group = _groups[_groupCount];
    group.argc = 0;
    int number = 0;
    for (char* word = std::strtok(line, " "); word != nullptr; word = std::strtok(nullptr, " "))
        readWord(group, number++, word);
    if (group.argc < argumentLimit)
        group.argv[group.argc] = nullptr;
    else
        group.averageTime = 0.0;
}

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

void TestPerformer::execute(OsFilePath const& path)
{
    loadFile(path.getChars());
    reset();
    TestProgress progress;
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
    std::ostringstream dumped;
    group.group->dump(dumped);
    print(dumped);
}

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
