// Processes, libraries, dates, names, timers, the processor.
#include "act.h"

#include "child.h"
#include "lockname.h"
#include "tempfolder.h"
#include "testpackage.h"

#include <base/lginterprocesslock.h>
#include <base/lmlibraries.h>
#include <base/oscpuinfo.h>
#include <base/osdateutil.h>
#include <base/osenv.h>
#include <base/osprocess.h>
#include <base/ossharedlib.h>
#include <base/osutils.h>
#include <base/periodictimer.h>
#include <base/sleeper.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <string>

using namespace Vn;

namespace VnTest
{
namespace
{
void require(bool isRight, char const* what)
{
    if (!isRight)
        throw std::logic_error(what);
}

/// A program that ends at once.
class Process : public Act
{
public:
    void prepare() override { _program = getProgramFolder() + "/endsatonce"; }

    void run() override
    {
        char const* const words[] = {_program.c_str(), nullptr};
        OsProcess process;
        process.start(words);
        process.wait();
    }

    std::string findFault(bool) override
    {
        if (::waitpid(-1, nullptr, WNOHANG | __WALL) != -1 || errno != ECHILD)
            return "a child is left";
        return "";
    }

private:
    std::string _program;
};

class Modules : public Act
{
public:
    void run() override
    {
        require(!LmLibraries::getList().empty(), "no libraries");
        LmLibraries::dumpList();
    }
};

class SharedLibrary : public Act
{
public:
    void prepare() override { _path = getProgramFolder() + "/libVNtestmodule.so"; }

    void run() override
    {
        const ObjPtr<OsSharedLib> library(OsSharedLib::open(_path.c_str()));
        require(library->getFunction("vnTestModuleNumber") != nullptr, "function");
    }

private:
    std::string _path;
};

class Dates : public Act
{
public:
    void run() override
    {
        OsDateTypes::DateRep local;
        OsDateUtil::makeTime(2012, 12, 14, 4, 26, 40.0, OsDateTypes::LocalTime, local);
        OsDateUtil::convertToDateStruct(OsDateUtil::getCurrentTime(), OsDateTypes::LocalTime);
    }
};

class Names : public Act
{
public:
    void prepare() override { askAllNameServices(); }

    void run() override
    {
        const ArrayPtr<char> host(OsUtils::getHostName());
        const ArrayPtr<char> user(OsUtils::getUserName(true));
        require(host[0] != '\0' && user[0] != '\0', "names");
    }
};

class Timers : public Act
{
public:
    void prepare() override
    {
        OsEnv::putVariable(("T4Q_TEST_DIR=" + _folder.path()).c_str());
        start();
    }

    void run() override
    {
        const ObjPtr<PeriodicTimer> timer(PeriodicTimer::create(0.001));
        timer->start();
        timer->wait();
        timer->setInterval(0.002);
        timer->wait();
        timer->stop();
        Sleeper::getInstance().sleep(0.001);
    }

    ~Timers() override { stop(); }

private:
    TempFolder _folder;
};

class Lock : public Act
{
public:
    void run() override
    {
        const ObjPtr<LgInterProcessLock> lock(LgInterProcessLock::create(_name.get().c_str()));
        lock->lock();
        lock->unlock();
        const LgInterProcessLockGuard guard(lock.get());
    }

private:
    const TempFolder _folder;
    const LockName _name{_folder};
};

class Processor : public Act
{
public:
    void run() override
    {
        OsCpuInfo::initialize();
        OsCpuInfo::getTypeName();
    }
};

template <class Kind>
NamedAct makeNamed(char const* name)
{
    return {name, [] { return std::make_unique<Kind>(); }, true};
}
}  // namespace

void addSystemActs(std::vector<NamedAct>& acts)
{
    acts.push_back(makeNamed<Process>("process"));
    acts.push_back(makeNamed<Modules>("modules"));
    acts.push_back(makeNamed<SharedLibrary>("sharedLibrary"));
    acts.back().statedTexts = {"Can't open dynamic library"};
    acts.back().mayBeInterrupted = true;  // the loader doesn't repeat what it opens
    acts.push_back(makeNamed<Dates>("dates"));
    acts.push_back(makeNamed<Names>("names"));
    acts.push_back(makeNamed<Timers>("timers"));
    acts.push_back(makeNamed<Lock>("lock"));
    acts.push_back(makeNamed<Processor>("processor"));
    acts.back().makesCalls = false;
}

}  // namespace VnTest
