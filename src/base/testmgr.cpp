// The `main` of a test program, from its command line to its exit code.
//
// 1. The handlers for exceptions that nothing catches are installed (testmgrhandlers_p.h).
// 2. An InInitGuard starts all packages, and takes the options of settings out of the command line. Its destructor
//    stops them on every way out, so they have stopped when an exception is reported.
// 3. What is left of the command line is looked at word by word: nothing, a performance run (testperformer.cpp), the
//    list of the loaded libraries, or a group with its own arguments.
// 4. The group runs: prepare(), execute(), terminate(). An exception skips what follows; a leak found by the check
//    skips it too, and is told by the exit code alone.
//
// Exceptions become an exit code here and nowhere else, so a group needs no handling of its own. The harness runs on
// one thread.
#include <base/testmgr.h>

#include <base/dbgbuildinfo.h>
#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildvalues_p.h>
#include <base/dbggroup_p.h>
#include <base/exbadexception.h>
#include <base/exbase.h>
#include <base/hmgc.h>
#include <base/hmgcex.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/lglog.h>
#include <base/lmlibraries.h>
#include <base/osfilepath.h>
#include <base/testgroup.h>
#include <base/testinform.h>
#include <base/testmgrhandlers_p.h>
#include <base/testperformer.h>
#include <base/testtrace_p.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <sstream>
#include <string>
#include <typeinfo>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/testmgr";

/// What the process returns. Scripts depend on the numbers.
enum ExitCode : int
{
    Done = 0,
    WrongArguments = 1,
    ExceptionReached = 2,
    LeakFound = 3
};

/// Intended: the order of the words differs from the one that is accepted, which has the option first. Programs
/// compare this text; do not mend.
constexpr char usage[] = "\nArguments: \n\n<testGroup> { <args> } \n<testGroup> -perf <fileName>\n"
                         "<testGroup> -dumpLeaks { <args> }\n<testGroup> -dumpLibs { <args> }\n"
                         "<testGroup> -detectLeaks { <args> }\n";

/// What the registry of build information shows for any test program. Holds nothing: the registry destroys it without
/// its destructor.
class TestSuiteBuildInfo : public DbgBuildInfo
{
public:
    char const* getApiName() const override { return "NG Test Suite"; }
    int getMajorVersion() const override { return 1; }
    int getMinorVersion() const override { return 0; }
    char const* getStatus() const override { return "Internal"; }
    char const* getLibraryName(bool) const override { return "N/A"; }
    char const* getBuildStamp(bool) const override { return "[No Prod. #]"; }
    char const* getBuildDate(bool) const override { return DbgBuildValues::date; }
    char const* getBuildType(bool) const override { return DbgBuildValues::type; }
    char const* getBuilder(bool) const override { return notAvailable; }
    char const* getExtraInfo() const override { return notAvailable; }

    virtual ~TestSuiteBuildInfo() = default;

private:
    static constexpr char notAvailable[] = "[Information not available]";
};

/// The arguments that no option of the library took: the program first, and a null pointer behind the last.
class Arguments
{
public:
    Arguments() : _texts(InContextAliasMgrBase::getUnboundArgs()), _count(static_cast<int>(_texts.size()))
    {
        _texts.push_back(nullptr);
    }

    /// Without the null pointer.
    int getCount() const { return _count; }

    /// Up to getCount(), where the null pointer is: an option without what should follow it is an unknown group.
    char* operator[](int index) const { return _texts[static_cast<std::size_t>(index)]; }

    /// Whether the argument, which is there, equals `text`.
    bool is(int index, char const* text) const { return std::strcmp((*this)[index], text) == 0; }

    /// From `index` on, which is the null pointer's at most.
    char** from(int index) { return _texts.data() + index; }

private:
    Vector<char*> _texts;
    int _count;
};

/// Passes the text to the trace output whatever levels are on: who asks for the usage wants to see it.
void printText(std::string const& text)
{
    TraceManager::getInstance().print(text.c_str());
}

/// Off by default, as the level is: for a log that should say which builds were tested.
void reportLibraries()
{
    // The text is formed first, as the log takes it in one piece.
    std::ostringstream text;
    text << "Registered versioned libraries:\n";
    DbgBuildInfoMgr::printBuildInfo(text, false);
    text << '\0';
    VN_LOG(*DbgGroup::get(), LgTypes::Informational, text.str().c_str());
}

/// By the base name alone: a folder of that name changes nothing.
bool isPixie(char const* program)
{
    return std::strstr(OsFilePath(program).getBaseName().getChars(), ".pixie") != nullptr;
}

/// Only the heading depends on the trace level.
void printLibraries()
{
    traceTest(sourceName, __LINE__, "Loaded Libraries:");
    LmLibraries::dumpList();
}

/// `-perf FILE`: runs the groups of the file and prints the table of their times.
int runPerformance(Arguments const& arguments)
{
    // Words behind the file are passed over.
    if (arguments.getCount() < 3) {
        TestInform::abnormalTermination(usage);
        return WrongArguments;
    }
    TestPerformer& performer = TestPerformer::getInstance();
    performer.execute(OsFilePath(arguments[2]));
    std::ostringstream table;
    table << performer;
    printText(table.str());
    return Done;
}

/// The option before the group's name, if there is one.
class GroupOptions
{
public:
    explicit GroupOptions(Arguments const& arguments)
        : _dumpsLibraries(arguments.is(1, "-dumpLibs")),
          _dumpsLeaks(arguments.is(1, "-dumpLeaks")),
          _detectsLeaks(arguments.is(1, "-detectLeaks"))
    {}

    bool dumpsLibraries() const { return _dumpsLibraries; }
    bool checksLeaks() const { return _dumpsLeaks || _detectsLeaks; }

    /// Whether a leak is printed with its call stack.
    bool dumpsStack() const { return !_detectsLeaks; }

    /// Where the group's name stands.
    int getGroupIndex() const { return _dumpsLibraries || checksLeaks() ? 2 : 1; }

private:
    bool _dumpsLibraries;
    bool _dumpsLeaks;
    bool _detectsLeaks;
};

/// The group runs all the same: the check then finds nothing.
void warnWithoutHeapForDebugging(char const* option)
{
    if (!HmGC::isMemDebugLoaded())
        traceTest(sourceName, __LINE__,
                  std::string("Warning: ") + option + " specified but MemDebug version of smartheap is not loaded");
}

/// Returns whether a leak was found. The check reports at its end, by an exception, which execute() may throw as
/// well.
bool findsLeak(TestGroup& group, int count, char** vector, bool dumpsStack)
{
    try {
        HmGC check{};  // with braces: all its fields are zero, whatever the stack held
        if (!dumpsStack)
            check.setStackDump(false);
        check.setThrowException(true);
        group.execute(count, vector);
    } catch (HmGCEx::ExGarbageDetected const&) {
        return true;
    }
    return false;
}

/// An empty line, the heading and an empty line.
void traceGroupHeading(TestGroup const& group)
{
    traceTest(sourceName, __LINE__, "");
    traceTest(sourceName, __LINE__, std::string("Executing ") + group.getName());
    traceTest(sourceName, __LINE__, "");
}

/// Not reached after an exception or a leak: these lines say that the group is through.
void traceGroupEnd()
{
    TestGroup::caseHeader("End");
    traceTest(sourceName, __LINE__, "Test group executed successfully.");
    traceTest(sourceName, __LINE__, "");
}

/// `GROUP ARGUMENTS`, with or without an option before the name. A group that asks for its name gets it in the place
/// of a program's name.
int runGroup(Arguments& arguments)
{
    const GroupOptions options(arguments);
    if (options.checksLeaks())
        warnWithoutHeapForDebugging(arguments[1]);
    TestGroup* const group = TestGroup::getInstance(arguments[options.getGroupIndex()]);
    if (group == nullptr) {
        TestInform::abnormalTermination("Unknown test group name.");
        return WrongArguments;
    }
    if (group->getPrintHeaders())
        traceGroupHeading(*group);
    // Behind the last argument stands the null pointer, so a group without arguments gets a vector as well.
    const int first = options.getGroupIndex() + (group->getGroupNameInArgs() ? 0 : 1);
    const int count = arguments.getCount() - first;
    char** const vector = arguments.from(first);
    group->prepare(count, vector);
    if (!options.checksLeaks())
        group->execute(count, vector);
    else if (findsLeak(*group, count, vector, options.dumpsStack()))
        return LeakFound;
    group->terminate();
    if (group->getPrintHeaders())
        traceGroupEnd();
    if (options.dumpsLibraries())
        printLibraries();
    return Done;
}

/// All of a run but the handling of exceptions. The guard is the first object, so it is the last to go.
int run(int argc, char** argv)
{
    char const* const* texts = argv;
    const InInitGuard guard(argc, texts);
    Arguments arguments;
    DbgBuildInfoMgr::registerAppInfo(ObjPtr<DbgBuildInfo>(new TestSuiteBuildInfo));
    reportLibraries();
    // A caller may pass no arguments at all; then there is no program name either.
    if (arguments.getCount() > 0)
        TestMgr::setIsPixified(isPixie(arguments[0]));
    if (arguments.getCount() < 2) {
        printText(usage);
        TestGroup::printInstances();
        return Done;
    }
    // Words of the driver come before groups, so a group can't have one of these as its name.
    if (arguments.is(1, "-perf"))
        return runPerformance(arguments);
    if (arguments.getCount() == 2 && arguments.is(1, "-dumpLibs")) {
        printLibraries();
        return Done;
    }
    return runGroup(arguments);
}

/// Intended: the text ends in the address of the logger's `ends`, as a standard stream takes that function for a
/// pointer. The report has always had this form; do not mend.
std::string describe(std::exception const& exception)
{
    std::ostringstream text;
    LgStream& (*const end)(LgStream&) = ends;
    text << "[Exception Type = " << typeid(exception).name() << "]\n"
         << exception.what() << "\n"
         << reinterpret_cast<void const*>(end);
    return text.str();
}

/// Called while an exception is handled. For a report that fails as well, for want of memory, the exit code has to do.
void reportException() noexcept
try {
    try {
        throw;
    } catch (ExBase const& failure) {
        // Nearly all of these are standard exceptions too: this one comes first, as it has the place of the throw.
        TestInform::exceptionEncountered(failure.getDetailedReason());
    } catch (std::exception const& failure) {
        TestInform::exceptionEncountered(describe(failure).c_str());
    } catch (...) {
        TestInform::exceptionEncountered("Unknown exception.");
    }
} catch (...) {
}
}  // namespace

/// Each exception is reported after its packages have stopped, since the guard in run() is destroyed first.
int TestMgr::runTest(int argc, char** const argv)
{
    TestMgrHandlers::install();
    try {
        return run(argc, argv);
    } catch (...) {
        reportException();
    }
    return ExceptionReached;
}

/// The group's own setter is private: only the driver knows the program's name.
void TestMgr::setIsPixified(bool isPixified)
{
    TestGroup::setIsPixified(isPixified);
}

}  // namespace Vn
