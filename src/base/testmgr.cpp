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

constexpr int done = 0;
constexpr int wronglyCalled = 1;
constexpr int failed = 2;
constexpr int leaked = 3;

constexpr char usage[] = "\nArguments: \n\n<testGroup> { <args> } \n<testGroup> -perf <fileName>\n"
                         "<testGroup> -dumpLeaks { <args> }\n<testGroup> -dumpLibs { <args> }\n"
                         "<testGroup> -detectLeaks { <args> }\n";

/// What the registry shows for any test program.
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

    int getCount() const { return _count; }

    /// Null behind the last.
    char* operator[](int index) const { return index < _count ? _texts[static_cast<std::size_t>(index)] : nullptr; }

    bool is(int index, char const* text) const
    {
        char const* const argument = (*this)[index];
        return argument != nullptr && std::strcmp(argument, text) == 0;
    }

    /// From `index` on, which is the null pointer's at most.
    char** from(int index) { return _texts.data() + index; }

private:
    Vector<char*> _texts;
    int _count;
};

void printText(std::string const& text)
{
    TraceManager::getInstance().print(text.c_str());
}

void reportLibraries()
{
    std::ostringstream text;
    text << "Registered versioned libraries:\n";
    DbgBuildInfoMgr::printBuildInfo(text, false);
    text << '\0';
    VN_LOG(*DbgGroup::get(), LgTypes::Informational, text.str().c_str());
}

bool isPixie(char const* program)
{
    return std::strstr(OsFilePath(program).getBaseName().getChars(), ".pixie") != nullptr;
}

void printLibraries()
{
    traceTest(sourceName, __LINE__, "Loaded Libraries:");
    LmLibraries::dumpList();
}

int runPerformance(Arguments const& arguments)
{
    if (arguments.getCount() < 3) {
        TestInform::abnormalTermination(usage);
        return wronglyCalled;
    }
    TestPerformer& performer = TestPerformer::getInstance();
    performer.execute(OsFilePath(arguments[2]));
    std::ostringstream table;
    table << performer;
    printText(table.str());
    return done;
}

/// What the words before the group's name ask for.
struct Wishes
{
    explicit Wishes(Arguments const& arguments)
        : dumpsLibraries(arguments.is(1, "-dumpLibs")),
          dumpsLeaks(arguments.is(1, "-dumpLeaks")),
          detectsLeaks(arguments.is(1, "-detectLeaks")),
          groupIndex(dumpsLibraries || dumpsLeaks || detectsLeaks ? 2 : 1)
    {}

    bool checksLeaks() const { return dumpsLeaks || detectsLeaks; }

    bool dumpsLibraries;
    bool dumpsLeaks;
    bool detectsLeaks;
    int groupIndex;
};

void warnWithoutHeapForDebugging(char const* option)
{
    if (!HmGC::isMemDebugLoaded())
        traceTest(sourceName, __LINE__,
                  std::string("Warning: ") + option + " specified but MemDebug version of smartheap is not loaded");
}

/// True if a leak was found.
bool executeUnderLeakCheck(TestGroup& group, int count, char** vector, bool dumpsStack)
{
    try {
        HmGC check{};
        if (!dumpsStack)
            check.setStackDump(false);
        check.setThrowException(true);
        group.execute(count, vector);
    } catch (HmGCEx::ExGarbageDetected const&) {
        return true;
    }
    return false;
}

int runGroup(Arguments& arguments)
{
    const Wishes wishes(arguments);
    if (wishes.checksLeaks())
        warnWithoutHeapForDebugging(arguments[1]);
    TestGroup* const group = TestGroup::getInstance(arguments[wishes.groupIndex]);
    if (group == nullptr) {
        TestInform::abnormalTermination("Unknown test group name.");
        return wronglyCalled;
    }
    if (group->getPrintHeaders()) {
        traceTest(sourceName, __LINE__, "");
        traceTest(sourceName, __LINE__, std::string("Executing ") + group->getName());
        traceTest(sourceName, __LINE__, "");
    }
    const int first = wishes.groupIndex + (group->getGroupNameInArgs() ? 0 : 1);
    const int count = arguments.getCount() - first;
    char** const vector = arguments.from(first);
    group->prepare(count, vector);
    if (!wishes.checksLeaks())
        group->execute(count, vector);
    else if (executeUnderLeakCheck(*group, count, vector, !wishes.detectsLeaks))
        return leaked;
    group->terminate();
    if (group->getPrintHeaders()) {
        TestGroup::caseHeader("End");
        traceTest(sourceName, __LINE__, "Test group executed successfully.");
        traceTest(sourceName, __LINE__, "");
    }
    if (wishes.dumpsLibraries)
        printLibraries();
    return done;
}

int run(int argc, char** argv)
{
    char const* const* texts = argv;
    const InInitGuard guard(argc, texts);
    Arguments arguments;
    DbgBuildInfoMgr::registerAppInfo(ObjPtr<DbgBuildInfo>(new TestSuiteBuildInfo));
    reportLibraries();
    if (arguments.getCount() > 0)
        TestMgr::setIsPixified(isPixie(arguments[0]));
    if (arguments.getCount() < 2) {
        printText(usage);
        TestGroup::printInstances();
        return done;
    }
    if (arguments.is(1, "-perf"))
        return runPerformance(arguments);
    if (arguments.getCount() == 2 && arguments.is(1, "-dumpLibs")) {
        printLibraries();
        return done;
    }
    return runGroup(arguments);
}

/// The text ends in the address of the logger's `ends`, which means nothing to a standard stream but its address.
std::string describe(std::exception const& exception)
{
    std::ostringstream text;
    LgStream& (*const end)(LgStream&) = ends;
    text << "[Exception Type = " << typeid(exception).name() << "]\n"
         << exception.what() << "\n"
         << reinterpret_cast<void const*>(end);
    return text.str();
}
}  // namespace

int TestMgr::runTest(int argc, char** const argv)
{
    TestMgrHandlers::install();
    try {
        return run(argc, argv);
    } catch (ExBase const& failure) {
        TestInform::exceptionEncountered(failure.getDetailedReason());
    } catch (std::exception const& failure) {
        TestInform::exceptionEncountered(describe(failure).c_str());
    } catch (...) {
        TestInform::exceptionEncountered("Unknown exception.");
    }
    return failed;
}

void TestMgr::setIsPixified(bool isPixified)
{
    TestGroup::setIsPixified(isPixified);
}

}  // namespace Vn
