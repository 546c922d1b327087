#include "workgroup.h"

#include <base/dbgbuildinfomgr.h>
#include <base/hmheapmgr.h>
#include <base/lmlibraries.h>
#include <base/osenv.h>
#include <base/sleeper.h>

#include <algorithm>
#include <cstring>
#include <sstream>

namespace
{
using namespace Vn;

class Modules : public WorkGroup
{
public:
    Modules() : WorkGroup("modules", "Looks for this library among the modules of the process.", 10) {}

private:
    void work(unsigned long count) override
    {
        for (unsigned long i = 0; i < count; ++i) {
            auto const& modules = LmLibraries::getList();
            require(std::any_of(modules.begin(), modules.end(),
                                [](LmLibrary const& module) { return std::strstr(module.getPath(), "VNbase"); }),
                    "this library");
        }
    }
} modules;

class Build : public WorkGroup
{
public:
    Build() : WorkGroup("build", "Prints what is known of the libraries.", 100) {}

private:
    void work(unsigned long count) override
    {
        for (unsigned long i = 0; i < count; ++i) {
            std::ostringstream text;
            DbgBuildInfoMgr::printBuildInfo(text, i % 2 == 0);
            require(text.str().find("API Tessola 0.2") != std::string::npos, "this library's version");
        }
    }
} build;

class Environment : public WorkGroup
{
public:
    Environment() : WorkGroup("environment", "Sets variables and reads them.", 1000) {}

private:
    void work(unsigned long count) override
    {
        for (unsigned long i = 0; i < count; ++i) {
            const std::string value = std::to_string(i);
            OsEnv::putVariable(("VNBASE_GROUPS=" + value).c_str());
            require(value == OsEnv::getVariable("VNBASE_GROUPS"), "the value of a variable");
        }
        OsEnv::putVariable("VNBASE_GROUPS=");
    }
} environment;

class Heap : public WorkGroup
{
public:
    Heap() : WorkGroup("heap", "Lets the heap's policy look at it.", 1000) {}

private:
    void work(unsigned long count) override
    {
        HmHeapMgr const& manager = HmHeapMgr::getInstance();
        for (unsigned long i = 0; i < count; ++i)
            manager.checkHeap();
    }
} heap;

class Sleep : public WorkGroup
{
public:
    Sleep() : WorkGroup("sleep", "Sleeps a millisecond at a time.", 10) {}

private:
    void work(unsigned long count) override
    {
        Sleeper& sleeper = Sleeper::getInstance();
        for (unsigned long i = 0; i < count; ++i) {
            const double before = sleeper.getCurrentTime();
            require(sleeper.sleep(0.001), "that it slept");
            require(sleeper.getCurrentTime() >= before, "time that goes on");
        }
    }
} sleeping;
}  // namespace
