// How the costs of start, stop, settings, groups, levels, registries and environment objects grow: each with n, 4n and 16n
// things. A cost that grows with n shows the same time for one thing in all three columns, one that grows with its square
// 16 times the time in the last.
//
//     benchscaling [WORD] [ROUNDS]      # lines that hold WORD; best of ROUNDS (5), sizes in turn
//
// Each measurement has a process of its own, as a process starts once.
#include "manypackages.h"

#include <base/envvar.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/lgregistry.h>
#include <base/lgtypes.h>
#include <base/trace.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
using Clock = std::chrono::steady_clock;
using Variable = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

/// Nanoseconds that `action` takes.
template <class Action>
double timeOf(Action const& action)
{
    const Clock::time_point start = Clock::now();
    action();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

enum class Order
{
    lastToFirst,
    firstToLast,
    any
};

std::vector<std::size_t> indices(std::size_t count, Order order)
{
    std::vector<std::size_t> list(count);
    std::iota(list.begin(), list.end(), 0);
    if (order == Order::lastToFirst)
        std::reverse(list.begin(), list.end());
    else if (order == Order::any)
        std::shuffle(list.begin(), list.end(), std::mt19937(1));
    return list;
}

std::string numbered(char const* word, std::size_t number)
{
    return word + std::to_string(number);
}

std::vector<std::string> numbered(char const* word, std::size_t first, std::size_t count)
{
    std::vector<std::string> list;
    for (std::size_t i = first; i < first + count; ++i)
        list.push_back(numbered(word, i));
    return list;
}

void start(std::vector<std::string> const& arguments)
{
    std::vector<char const*> pointers;
    for (std::string const& argument : arguments)
        pointers.push_back(argument.c_str());
    int argc = static_cast<int>(pointers.size());
    char const* const* argv = pointers.data();
    Vn::InInitMgr::getInstance().initialize(argc, argv);
}

/// For the lines that take their time at the start, which takes the library's own packages as well.
double timeOfStart(std::vector<std::string> const& arguments)
{
    return timeOf([&] { start(arguments); });
}

void stop()
{
    Vn::InInitMgr::getInstance().finalize();
}

/// Objects in an order of destruction of their own.
template <class Object>
double timeOfDestruction(std::vector<std::unique_ptr<Object>>& objects, Order order)
{
    const std::vector<std::size_t> places = indices(objects.size(), order);
    return timeOf([&] {
        for (std::size_t place : places)
            objects[place].reset();
    });
}

// ---- packages

using Packages = std::vector<std::unique_ptr<Vn::InPackageInit>>;

Packages makePackages(std::size_t count, int needsEach)
{
    std::mt19937 random(1);
    std::vector<VnBench::PackageType> const& types = VnBench::getPackageTypes();
    Packages packages;
    for (std::size_t i = 0; i < count; ++i) {
        VnBench::Needs needs;
        for (int k = 0; k < needsEach && i > 0; ++k)
            needs.push_back(types[random() % i].type);
        packages.emplace_back(types[i].make(numbered("package", random()).c_str(), needs));
    }
    return packages;
}

double registerPackages(std::size_t count)
{
    Packages packages;
    return timeOf([&] { packages = makePackages(count, 10); });
}

template <int needsEach>
double startPackages(std::size_t count)
{
    const Packages packages = makePackages(count, needsEach);
    return timeOfStart({"bench"});
}

double stopPackages(std::size_t count)
{
    const Packages packages = makePackages(count, 10);
    start({"bench"});
    return timeOf(stop);
}

template <Order order>
double destroyWaiting(std::size_t count)
{
    Packages packages = makePackages(count, 10);
    return timeOfDestruction(packages, order);
}

template <Order order>
double destroyRunning(std::size_t count)
{
    Packages packages = makePackages(count, 10);
    start({"bench"});
    return timeOfDestruction(packages, order);
}

// ---- arguments

double takeOptions(std::size_t count)
{
    const Vn::InContextAlias<Vn::InInitArg, 1> option("v", "bench");
    std::vector<std::string> arguments(count + 1, "-v");
    arguments[0] = "bench";
    return timeOfStart(arguments);
}

double keepArguments(std::size_t count)
{
    const Vn::InContextAlias<Vn::InInitArg, 1> option("v", "bench");
    std::vector<std::string> arguments(count + 1, "file");
    arguments[0] = "bench";
    return timeOfStart(arguments);
}

double addArguments(std::size_t count)
{
    start({"bench"});
    return timeOf([&] {
        for (std::size_t i = 0; i < count; ++i)
            start({"file"});
    });
}

// ---- settings

/// A setting from the environment with a default, as programs declare them.
struct Setting
{
    Setting(std::string const& name, Vn::InPackageInitBase& package)
        : variable(name.c_str(), "bench"),
          byDefault("17", "bench"),
          value(name.c_str(), package, variable, byDefault)
    {}

    Variable variable;
    Default byDefault;
    Vn::InVariable<int> value;
};
using Settings = std::vector<std::unique_ptr<Setting>>;

/// A package and its settings, which must go before it does.
struct SettingsOfAPackage
{
    explicit SettingsOfAPackage(std::size_t count)
        : names(numbered("BENCH_SETTING_", 0, count)), package(makePackage())
    {
        settings.reserve(count);
    }

    void makeAll()
    {
        for (std::string const& name : names)
            settings.push_back(std::make_unique<Setting>(name, *package));
    }

    static std::unique_ptr<Vn::InPackageInit> makePackage()
    {
        return std::unique_ptr<Vn::InPackageInit>(
            VnBench::getPackageTypes()[0].make("settings", {Vn::InInit<VnInit::initialize>::getType()}));
    }

    std::vector<std::string> names;
    std::unique_ptr<Vn::InPackageInit> package;
    Settings settings;
};

double makeSettings(std::size_t count)
{
    SettingsOfAPackage all(count);
    return timeOf([&] { all.makeAll(); });
}

double startSettings(std::size_t count)
{
    SettingsOfAPackage all(count);
    all.makeAll();
    return timeOfStart({"bench"});
}

double startSetSettings(std::size_t count)
{
    SettingsOfAPackage all(count);
    all.makeAll();
    for (std::string const& name : all.names)
        ::setenv(name.c_str(), "18", 1);
    return timeOfStart({"bench"});
}

double overrideSettings(std::size_t count)
{
    SettingsOfAPackage all(count);
    all.makeAll();
    return timeOf([&] {
        for (std::string const& name : all.names)
            Vn::InVariableBase::overrideViaHandle(name.c_str(), "19", "bench");
    });
}

double stopSettings(std::size_t count)
{
    SettingsOfAPackage all(count);
    all.makeAll();
    start({"bench"});
    return timeOf(stop);
}

template <Order order>
double destroySettings(std::size_t count)
{
    SettingsOfAPackage all(count);
    all.makeAll();
    return timeOfDestruction(all.settings, order);
}

// ---- groups

double parseGroups(std::size_t count)
{
    std::string text;
    for (std::string const& name : numbered("Group", 0, count))
        text += name + "=Tracing,";
    Vn::LgMajorGroup::initialize(nullptr);
    return timeOf([&] { Vn::LgMajorGroup::parse(text.c_str()); });
}

double findGroups(std::size_t count)
{
    const std::vector<std::string> names = numbered("Group", 0, count);
    Vn::LgMajorGroup::initialize(nullptr);
    const auto findAll = [&names] {
        for (std::string const& name : names)
            Vn::LgMajorGroup::getInstanceForName(name.c_str());
    };
    findAll();
    return timeOf(findAll);
}

double endGroups(std::size_t count)
{
    Vn::LgMajorGroup::initialize(nullptr);
    for (std::string const& name : numbered("Group", 0, count))
        Vn::LgMajorGroup::getInstanceForName(name.c_str());
    return timeOf(Vn::LgMajorGroup::finalize);
}

// ---- levels

double registerLevels(std::size_t count)
{
    const std::vector<std::string> names = numbered("Level", 0, count);
    return timeOf([&] {
        for (std::string const& name : names)
            Vn::Trace::registerLevel(name.c_str(), "bench/scaling.cpp");
    });
}

double showLevels(std::size_t count)
{
    std::string options;
    for (std::string const& name : numbered("Level", 0, count))
        options += "show=" + name + ',';
    return timeOf([&] { Vn::Trace::setOptions(options.c_str()); });
}

/// Each second token is for all levels that there are.
double showAndHideAll(std::size_t count)
{
    std::string options;
    for (std::string const& name : numbered("Level", 0, count))
        options += "hide=all,show=" + name + ',';
    return timeOf([&] { Vn::Trace::setOptions(options.c_str()); });
}

// ---- queues

/// The registry looks at no queue, so these need not be any.
std::vector<Vn::LgQueue*> makeNames(std::size_t count)
{
    static std::vector<std::aligned_storage_t<16>> places;
    places.resize(count);
    std::vector<Vn::LgQueue*> names;
    for (auto& place : places)
        names.push_back(reinterpret_cast<Vn::LgQueue*>(&place));
    return names;
}

double registerQueues(std::size_t count)
{
    const std::vector<Vn::LgQueue*> names = makeNames(count);
    Vn::LgSimpleRegistry registry;
    return timeOf([&] {
        for (Vn::LgQueue* name : names)
            registry.registerQueue(name);
    });
}

template <Order order>
double deregisterQueues(std::size_t count)
{
    const std::vector<Vn::LgQueue*> names = makeNames(count);
    Vn::LgSimpleRegistry registry;
    for (Vn::LgQueue* name : names)
        registry.registerQueue(name);
    const std::vector<std::size_t> places = indices(count, order);
    return timeOf([&] {
        for (std::size_t place : places)
            registry.deregisterQueue(names[place]);
    });
}

/// All threads of a program have ended, and the reader puts their queues away.
double endQueues(std::size_t count)
{
    start({"bench"});
    for (std::size_t i = 0; i < count; ++i) {
        auto* const queue = new Vn::LgQueue(i);
        Vn::LgLog::getRegistry()->registerQueue(queue);
        queue->creatorExit();
    }
    return timeOf([] { Vn::LgReader().flushAll(); });
}

// ---- environment objects

using Objects = std::vector<std::unique_ptr<Vn::EnvVar>>;

Objects makeObjects(std::vector<std::string> const& names)
{
    Objects objects;
    for (std::string const& name : names)
        objects.push_back(std::make_unique<Vn::EnvIntVar>(name.c_str(), 17));
    return objects;
}

double makeObjects(std::size_t count)
{
    const std::vector<std::string> names = numbered("BENCH_OBJECT_", 0, count);
    Objects objects;
    return timeOf([&] { objects = makeObjects(names); });
}

double refreshObjects(std::size_t count)
{
    const std::vector<std::string> names = numbered("BENCH_OBJECT_", 0, count);
    const Objects objects = makeObjects(names);
    return timeOf([&] {
        for (std::unique_ptr<Vn::EnvVar> const& object : objects)
            object->refresh();
    });
}

double refreshSetObjects(std::size_t count)
{
    const std::vector<std::string> names = numbered("BENCH_OBJECT_", 0, count);
    const Objects objects = makeObjects(names);
    for (std::string const& name : names)
        ::setenv(name.c_str(), "18", 1);
    return timeOf([&] {
        for (std::unique_ptr<Vn::EnvVar> const& object : objects)
            object->refresh();
    });
}

template <Order order>
double destroyObjects(std::size_t count)
{
    const std::vector<std::string> names = numbered("BENCH_OBJECT_", 0, count);
    Objects objects = makeObjects(names);
    return timeOfDestruction(objects, order);
}

// ---- the table

struct Line
{
    char const* what;
    std::size_t count;  ///< n
    double (*measure)(std::size_t count);
};

constexpr Line lines[] = {
    {"start: packages registered, ten dependencies each", 300, registerPackages},
    {"start: packages without needs", 300, startPackages<0>},
    {"start: packages, ten dependencies each", 300, startPackages<10>},
    {"stop: packages", 300, stopPackages},
    {"packages that wait destroyed, last to first", 300, destroyWaiting<Order::lastToFirst>},
    {"packages that wait destroyed, first to last", 300, destroyWaiting<Order::firstToLast>},
    {"packages that run destroyed, last to first", 300, destroyRunning<Order::lastToFirst>},
    {"packages that run destroyed, any order", 300, destroyRunning<Order::any>},
    {"arguments: options taken", 10000, takeOptions},
    {"arguments: kept", 10000, keepArguments},
    {"arguments: added one by one", 1000, addArguments},
    {"settings: made", 1000, makeSettings},
    {"settings: overridden", 1000, overrideSettings},
    {"settings: started, none set", 1000, startSettings},
    {"settings: started, all set", 1000, startSetSettings},
    {"settings: stopped", 1000, stopSettings},
    {"settings: destroyed, last to first", 1000, destroySettings<Order::lastToFirst>},
    {"settings: destroyed, first to last", 1000, destroySettings<Order::firstToLast>},
    {"settings: destroyed, any order", 1000, destroySettings<Order::any>},
    {"groups: read from a text", 1000, parseGroups},
    {"groups: found again", 1000, findGroups},
    {"groups: ended", 1000, endGroups},
    {"levels: registered", 1000, registerLevels},
    {"levels: shown by a text", 1000, showLevels},
    {"levels: all hidden before each is shown", 1000, showAndHideAll},
    {"queues: registered", 1000, registerQueues},
    {"queues: deregistered, last to first", 1000, deregisterQueues<Order::lastToFirst>},
    {"queues: deregistered, first to last", 1000, deregisterQueues<Order::firstToLast>},
    {"queues: deregistered, any order", 1000, deregisterQueues<Order::any>},
    {"queues: ended and put away by the reader", 250, endQueues},
    {"environment objects: made", 1000, makeObjects},
    {"environment objects: refreshed, none set", 1000, refreshObjects},
    {"environment objects: refreshed, all set", 1000, refreshSetObjects},
    {"environment objects: destroyed, last to first", 1000, destroyObjects<Order::lastToFirst>},
    {"environment objects: destroyed, first to last", 1000, destroyObjects<Order::firstToLast>},
    {"environment objects: destroyed, any order", 1000, destroyObjects<Order::any>},
};

/// What a process of its own measures for line `number`; negative if it fails.
double measureApart(std::size_t number, std::size_t count)
{
    static const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command = "'" + program + "' --line " + std::to_string(number) + " " + std::to_string(count);
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    double nanoseconds = -1;
    const bool isRead = pipe != nullptr && std::fscanf(pipe, "%lf", &nanoseconds) == 1;
    const bool isClosed = pipe != nullptr && ::pclose(pipe) == 0;
    return isRead && isClosed ? nanoseconds : -1;
}

bool printLine(std::size_t number, int rounds)
{
    constexpr std::size_t factors[] = {1, 4, 16};
    Line const& line = lines[number];
    std::vector<double> times[3];
    for (int round = 0; round < rounds; ++round)
        for (int i = 0; i < 3; ++i)
            times[i].push_back(measureApart(number, factors[i] * line.count));
    std::printf("%-48s%8zu", line.what, line.count);
    double each[3];
    for (int i = 0; i < 3; ++i) {
        std::sort(times[i].begin(), times[i].end());
        if (times[i].front() < 0)
            return false;
        each[i] = times[i].front() / static_cast<double>(factors[i] * line.count);
        std::printf("%11.1f", each[i]);
    }
    const double spread = times[2][times[2].size() / 2] / times[2].front();
    std::printf("%10.2f%10.1f%9.2f\n", times[2].front() / 1e6, each[2] / each[0], spread);
    return std::fflush(stdout) == 0;
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::string(argv[1]) == "--line") {
        const double time = lines[std::stoul(argv[2])].measure(std::stoul(argv[3]));
        std::printf("%f\n", time);
        std::fflush(stdout);
        std::_Exit(0);  // what the measurement left is no part of it
    }
    std::printf("%-48s%8s%11s%11s%11s%10s%10s%9s\n", "", "n", "ns at n", "at 4n", "at 16n", "ms, 16n", "16n / n",
                "spread");
    const std::string word = argc > 1 ? argv[1] : "";
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    for (std::size_t i = 0; i < std::size(lines); ++i)
        if (std::string(lines[i].what).find(word) != std::string::npos && !printLine(i, rounds)) {
            std::fprintf(stderr, "\nbenchscaling: can't measure \"%s\"\n", lines[i].what);
            return 1;
        }
    return 0;
}
