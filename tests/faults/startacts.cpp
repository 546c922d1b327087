// Start and stop, settings, help, build information, trace, the driver of tests.
#include "act.h"

#include "tempfolder.h"
#include "testpackage.h"

#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildinfoutil.h>
#include <base/envvar.h>
#include <base/hmheapmgr.h>
#include <base/incontextalias.h>
#include <base/inex.h>
#include <base/inoptionparser.h>
#include <base/inusage.h>
#include <base/invariable.h>
#include <base/osenv.h>
#include <base/testgroup.h>
#include <base/testmgr.h>
#include <base/testperformer.h>
#include <base/trace.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

using namespace Vn;

namespace VnTest
{
namespace
{
using Argument = InContextAlias<InInitArg, 1>;
using Variable = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

/// A folder for what the logger writes, so that nothing goes into the user's own.
class WithLogs : public Act
{
public:
    void prepare() override { OsEnv::putVariable(("T4Q_TEST_DIR=" + folder.path()).c_str()); }

protected:
    TempFolder folder;
};

/// Some packages of a program's own, with a setting that two sources may give.
class Program
{
public:
    Program()
        : _first("first", {InInit<VnInit::initArg>::getType(), InInit<VnInit::logger>::getType()}),
          _second("second", {NumberedPackage<901>::getType()}),
          _setting("faults.setting", _first, _option, _variable, _default)
    {}

    int getValue() const { return _setting.getValue(); }

    /// Started packages; a stop leaves none.
    int countStarted() const { return _first.isInitialized + _second.isInitialized; }

private:
    NumberedPackage<901> _first;
    NumberedPackage<902> _second;
    Argument _option{"z:", "a number"};
    Variable _variable{"VN_TEST_FAULTS", "a number"};
    Default _default{"1", "a number"};
    InVariable<int> _setting;
};

bool stopsQuietly()
{
    try {
        stop();
        return true;
    } catch (
        InEx::
            ExFinaliseBeforeInit const&) {  // a start that has failed before all packages is as if it had never been
        startWith({"program", "-z", "7", "operand"});
        stop();
        return true;
    } catch (ExBase const&) {
        return false;
    }
}

/// All packages of the library and two of a program come up, and go down: also when they came up in part only.
class Start : public WithLogs
{
public:
    void run() override { startWith({"program", "-z", "7", "operand"}); }

    std::string findFault(bool hasThrown) override
    {
        std::string fault;
        if (!hasThrown && (_program.getValue() != 7 || _program.countStarted() != 2))
            fault = "started, but not whole";
        if (!stopsQuietly())
            fault = "what has started can't be stopped";
        return fault;
    }

    /// A process starts once; what didn't start stays so.
    bool canBeRepeated() const override { return false; }

private:
    Program _program;
};

class Stop : public WithLogs
{
public:
    void prepare() override
    {
        WithLogs::prepare();
        startWith({"program", "-z", "7", "operand"});
    }

    void run() override { stop(); }

    /// A stop that throws may be called once more.
    std::string findFault(bool hasThrown) override
    {
        if (hasThrown && !stopsQuietly())
            return "can't be stopped any more";
        return _program.countStarted() != 0 ? "stopped, but not all" : "";
    }

    bool canBeRepeated() const override { return false; }

private:
    Program _program;
};

/// Declared, given by the command line and an override, read, and taken back.
class Settings : public Act
{
public:
    void run() override
    {
        Program program;
        InVariableBase::overrideViaHandle("faults.other", "8", "a test");
        const NumberedPackage<903> package("third", {InInit<VnInit::initArg>::getType()});
    }

    std::string findFault(bool) override
    {
        return InVariableBase::queryViaHandle("faults.setting") != nullptr ? "a setting stays behind" : "";
    }
};

/// The text of a program's usage, and its settings' values.
class Usage : public Act
{
public:
    void run() override
    {
        const Program program;
        bool isGiven = false;
        InUsage usage("tells how often");
        usage.operands("FILE...", 1).word("--fast", "leaves out what is slow", isGiven).note("A note.");
        std::ostringstream text;
        text.exceptions(std::ios::badbit);
        usage.print(text, "program", 80);
        usage.printManPage(text, "program");
        usage.printBashCompletion(text, "program");
        char const* const given[] = {"program", "-z", "no number", "-q", nullptr};
        const std::vector<InFault> faults = usage.getFaults(4, given);
        InUsage::printSettings(text, InUsage::getSettings(4, given));
        _result = std::to_string(faults.size()) + text.str();
    }

    std::string findFault(bool hasThrown) override
    {
        if (hasThrown)
            return "";
        if (_first.empty())
            _first = _result;
        return _result.size() < 500 || _first != _result ? "the text isn't whole" : "";
    }

private:
    std::string _first, _result;
};

class Environment : public Act
{
public:
    void run() override
    {
        OsEnv::putVariable("VN_TEST_A_VARIABLE_WITH_A_LONG_NAME=17");
        EnvIntVar whole("VN_TEST_A_VARIABLE_WITH_A_LONG_NAME", 1);
        EnvDoubleVar number("VN_TEST_ANOTHER", 1.5);
        std::ostringstream text;
        text.exceptions(std::ios::badbit);
        text << EnvVar::getRegistry();
        EnvVarRegistry copy(EnvVar::getRegistry());
        copy.remove(&number);
        _value = whole.getValue();
    }

    std::string findFault(bool hasThrown) override
    {
        if (EnvVar::getRegistry().size() != 0)
            return "a variable stays in the registry";
        return !hasThrown && _value != 17 ? "not what was put" : "";
    }

private:
    int _value = 0;
};

class Tracing : public Act
{
public:
    void prepare() override { Trace::setOptions("reset"); }

    void run() override
    {
        Trace::setOptions("on,line,show=a level for trials with a long name");
        TraceLevel* const level = Trace::registerLevel("a level for trials with a long name", "trial.cpp");
        {
            VN_TRACE_ENTRY(*level, "a function");
            VN_TRACE(*level, "some " << 3 << " words");
        }
        std::ostringstream levels;
        levels.exceptions(std::ios::badbit);
        Trace::printLevels(levels);
        Trace::setOptions("hide=a level for trials with a long name");
        if (Trace::isEnabled(*level))
            throw std::logic_error("the level is still on");
    }

    void recover() override { Trace::setOptions("reset"); }
};

class CountingGroup : public TestGroup
{
public:
    CountingGroup() : TestGroup("counting") { setDescription("counts"); }

    void execute(int, char** const) override
    {
        caseHeader("a case");
        log("a line");
        ++runs;
    }

    int runs = 0;
};

/// The `main` of a test program, with a group. All failures become an exit code.
class Driver : public WithLogs
{
public:
    void run() override
    {
        std::string program = "program", group = "counting", argument = "argument";
        char* words[] = {program.data(), group.data(), argument.data(), nullptr};
        _code = TestMgr::runTest(3, words);
    }

    std::string findFault(bool hasThrown) override
    {
        if (hasThrown)
            return "an exception has left the driver";
        if (_code == 0 && _group.runs != 1)
            return "done, but the group hasn't run";
        return _code != 0 && _code != 2 ? "exit code " + std::to_string(_code) : "";
    }

    /// Packages that have started go on behind an exception that isn't of the start itself.
    void recover() override
    {
        try {
            stop();
        } catch (InEx const&) {  // stopped, or never started
        }
    }

    bool canBeRepeated() const override { return false; }

private:
    CountingGroup _group;
    int _code = -1;
};

/// A list of groups with their times.
class TimedRuns : public WithLogs
{
public:
    void prepare() override
    {
        WithLogs::prepare();
        start();
        _list = folder.file("list", "counting 3 one two three\ncounting 1\n");
    }

    void run() override
    {
        _group.runs = 0;
        TestPerformer::getInstance().execute(OsFilePath(_list.c_str()));
        std::ostringstream table;
        table.exceptions(std::ios::badbit);
        table << TestPerformer::getInstance();
        _table = table.str();
    }

    std::string findFault(bool hasThrown) override
    {
        return !hasThrown && _group.runs != 4 ? "not all groups have run" : "";
    }

    ~TimedRuns() override { stop(); }

private:
    CountingGroup _group;
    std::string _list, _table;
};

class BuildInformation : public WithLogs
{
public:
    void prepare() override
    {
        WithLogs::prepare();
        start();
    }

    void run() override
    {
        std::ostringstream text;
        text.exceptions(std::ios::badbit);
        DbgBuildInfoMgr::printBuildInfo(text, true);
        HmHeapMgr::getInstance().dump(text);
        _text = text.str();
    }

    ~BuildInformation() override { stop(); }

private:
    std::string _text;
};

template <class Kind>
NamedAct makeNamed(char const* name, bool makesCalls = true)
{
    return {name, [] { return std::make_unique<Kind>(); }, makesCalls};
}
}  // namespace

void addStartActs(std::vector<NamedAct>& acts)
{
    acts.push_back(makeNamed<Start>("start"));
    acts.push_back(makeNamed<Stop>("stop"));
    acts.push_back(makeNamed<Settings>("settings", false));
    acts.push_back(makeNamed<Usage>("usage", false));
    acts.push_back(makeNamed<Environment>("environment", false));
    acts.back().statedTexts = {"Could not set environment variable"};
    acts.back().spareBlocks = 1;  // a text that the C library could not note as its own, and makes anew
    acts.push_back(makeNamed<Tracing>("trace", false));
    acts.push_back(makeNamed<Driver>("driver"));
    acts.back().spareBlocks = 2;  // the tables of groups, which serve messages also where the logger couldn't start
    acts.push_back(makeNamed<TimedRuns>("timedRuns"));
    acts.back().statedTexts = {"Invalid file name"};  // the C library has no memory for an open file
    acts.back().spareBlocks = 1;                      // the trace level of exceptions, made by the first one
    acts.push_back(makeNamed<BuildInformation>("buildInformation", false));
}

}  // namespace VnTest
