// A plug-in of a program that isn't linked to the library. Each scenario begins in `main` and ends when the static objects
// of the plug-in and of the library have been destroyed.
#include "buildinfo.h"

#include <base/dbgbuildinfomgr.h>
#include <base/envvar.h>
#include <base/incontextaliasmgr.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/lginterprocesslock.h>
#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/lmlibraries.h>
#include <base/testgroup.h>
#include <base/trace.h>

#include <cstdlib>
#include <cstring>
#include <future>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#if defined(_WIN32)
#    define LATE_EXPORT extern "C" __declspec(dllexport)
#else
#    define LATE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace VnInit
{
class late
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::late> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();

public:
    void performFinalize() override { std::cout << "stop late" << std::endl; }
};

VN_DEFINE_PACKAGE(late, VnInit::base);

namespace
{
using Package = Vn::InInit<VnInit::late>;

bool areStaticsGone = false;

/// Destroyed before the library's static objects, as it was made behind them.
struct Witness
{
    ~Witness() { areStaticsGone = true; }
} witness;

void start()
{
    char const* const words[] = {"late", "-x", "file"};
    int count = 3;
    char const* const* arguments = words;
    Vn::InInitMgr::getInstance().initialize(count, arguments);
}

bool isListed()
{
    std::ostringstream text;
    Vn::InInitMgr::getInstance().dump(text);
    return text.str().find("'late'") != std::string::npos;
}

/// A package whose owner is destroyed late.
class PackageGoes
{
public:
    static void begin() { package = new Package; }

    static void end()
    {
        std::cout << "listed " << isListed() << std::endl;
        delete package;
        std::cout << "listed " << isListed() << std::endl;
        const Package another;
        std::cout << "listed " << isListed() << std::endl;
    }

private:
    static inline Package* package = nullptr;
};

class VariableGoes
{
public:
    static void begin() { variable = new Vn::EnvVar("VN_TEST_LATE", "default"); }

    static void end()
    {
        variable->refresh();
        std::cout << Vn::EnvVar::getRegistry() << std::endl;
        delete variable;
        std::cout << Vn::EnvVar::getRegistry().size() << std::endl;
        const Vn::EnvIntVar another("VN_TEST_LATE", 5);
        std::cout << Vn::EnvVar::getRegistry().size() << " " << another.getValue() << std::endl;
    }

private:
    static inline Vn::EnvVar* variable = nullptr;
};

/// All that runs is stopped at the end: the library's own packages are still there.
class StopComesLate
{
public:
    static void begin()
    {
        package = new Package;
        start();
    }

    static void end()
    {
        Vn::InInitMgr::getInstance().finalize();
        std::cout << Vn::InInitMgr::getInstance() << std::flush;
        delete package;
    }

private:
    static inline Package* package = nullptr;
};

/// A reader is in the middle of its work when the static objects go.
class ReaderGoesOn
{
public:
    static void begin()
    {
        start();
        queue = new Vn::LgQueue(7);
        Vn::LgLog::getRegistry()->registerQueue(queue);
        Vn::LgLog::setQueueFunction([] { return queue; });
        Vn::LgLog::setLoggerActivation(true);
        Vn::LgLog::setRegistry(Vn::ObjPtr<Vn::LgRegistry>(new Gate));
        const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Late"), "Reader");
        for (int i = 1; i <= 3; ++i)
            VN_LOG(group, Vn::LgTypes::Warning, "message " << i);
        reader = new std::thread([] { Vn::LgReader().flushAll(); });
        isInside->get_future().wait();
    }

    static void end()
    {
        mayGoOn->set_value();
        reader->join();
        delete reader;
        std::cout << "pending " << Vn::LgReader().eventsPending() << ", lock "
                  << (Vn::LgLog::getInterProcessLock() != nullptr) << std::endl;
    }

private:
    /// Holds the reader in its second look at the queues.
    class Gate : public Vn::LgSimpleRegistry
    {
    public:
        Vn::List<Vn::LgQueue*> getQueueList() const override
        {
            if (++looks == 2) {
                isInside->set_value();
                mayGoOn->get_future().wait();
            }
            return LgSimpleRegistry::getQueueList();
        }

    private:
        mutable int looks = 0;
    };

    static inline Vn::LgQueue* queue = nullptr;
    static inline std::thread* reader = nullptr;
    static inline std::promise<void>* const isInside = new std::promise<void>;
    static inline std::promise<void>* const mayGoOn = new std::promise<void>;
};

/// Messages of an ended group, with the logger active and not.
class GroupIsUsed
{
public:
    static void begin()
    {
        start();
        major = &Vn::LgMajorGroup::getInstanceForName("Late");
        group = new Vn::LgMinorGroup(*major, "Group");
        Vn::InInitMgr::getInstance().finalize();
    }

    static void end()
    {
        for (const bool isActive : {false, true}) {
            Vn::LgLog::setLoggerActivation(isActive);
            VN_LOG(*group, Vn::LgTypes::InternalError, "evaluated " << ++evaluated);
        }
        Vn::LgLog::setLoggerActivation(false);
        major->setLogThreshold(Vn::LgTypes::Warning, false);
        VN_LOG(*group, Vn::LgTypes::Warning,
               "evaluated " << ++evaluated);  // what somebody has asked for explicitly
        delete group;
    }

private:
    static inline Vn::LgMajorGroup* major = nullptr;
    static inline Vn::LgMinorGroup* group = nullptr;
    static inline int evaluated = 0;
};

class ListsAreRead
{
public:
    static void begin()
    {
        start();
        Vn::LmLibraries::getList();
        level = Vn::Trace::registerLevel("Late", "/a/late.cpp");
        static constexpr VnTest::BuildFacts facts{"late"};
        Vn::DbgBuildInfoMgr::registerAppInfo(VnTest::ownedInfo(facts));
    }

    static void end()
    {
        for (char const* argument : Vn::InContextAliasMgrBase::getUnboundArgs())
            std::cout << argument << " ";
        std::cout << Vn::InContextAliasMgrBase::getApplicationName() << " " << Vn::InInitMgr::getEnv("VN_TEST_LATE")
                  << std::endl;
        std::cout << "libraries " << !Vn::LmLibraries::getList().empty() << std::endl;
        std::cout << "application " << Vn::DbgBuildInfoMgr::getAppInfo().getApiName() << std::endl;
        std::ostringstream text;
        Vn::DbgBuildInfoMgr::printBuildInfo(text, false);
        std::cout << "build " << (text.str().find("\tlibVNbase (") != std::string::npos) << std::endl;
        Vn::Trace::setOptions("show=Late");
        VN_TRACE(*level, "traced");
        text.str("");
        Vn::Trace::printLevels(text);
        std::cout << "level " << (text.str().find("X Late") != std::string::npos) << std::endl;
        static Group& group = *new Group;
        std::cout << "group " << (Vn::TestGroup::getInstance("late") == &group) << std::endl;
    }

private:
    class Group : public Vn::TestGroup
    {
    public:
        Group() : TestGroup("late") {}
        void execute(int, char** const) override {}
    };

    static inline Vn::TraceLevel* level = nullptr;
};

struct Scenario
{
    char const* name;
    void (*begin)();
    void (*end)();
};

constexpr Scenario scenarios[] = {
    {"package", PackageGoes::begin, PackageGoes::end},  {"variable", VariableGoes::begin, VariableGoes::end},
    {"stop", StopComesLate::begin, StopComesLate::end}, {"reader", ReaderGoesOn::begin, ReaderGoesOn::end},
    {"group", GroupIsUsed::begin, GroupIsUsed::end},    {"lists", ListsAreRead::begin, ListsAreRead::end},
};

Scenario const* chosen = nullptr;
}  // namespace

LATE_EXPORT bool lateBegin(char const* name)
{
    for (Scenario const& scenario : scenarios)
        if (std::strcmp(scenario.name, name) == 0)
            chosen = &scenario;
    if (chosen != nullptr)
        chosen->begin();
    return chosen != nullptr;
}

LATE_EXPORT void lateEnd()
{
#if !defined(_WIN32)
    std::cout << "static objects gone: " << areStaticsGone << std::endl;
#endif
    chosen->end();
}

/// Takes the lock that the environment names, in the calling thread, and gives it back or not. The lock itself stays.
LATE_EXPORT void lateTakeLock(bool gives)
{
    Vn::LgInterProcessLock& lock =
        *Vn::LgInterProcessLock::create(std::getenv("VN_INTERNAL_INTERPROCESS_LOG_LOCK"));
    lock.lock();
    if (gives)
        lock.unlock();
}
