// What grows with its input: steps are counted, not timed. Steps that stay within the library's own code aren't seen here;
// inholestest.cpp and listplacestest.cpp count those.
#include "countedcalls.h"

#include <base/inpackages.h>
#include <base/invariable.h>
#include <base/lgtypes.h>

#include "child.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::getSteps;

using Argument = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

namespace
{
template <class Action>
unsigned long stepsOf(Action const& action)
{
    const unsigned long before = getSteps();
    action();
    return getSteps() - before;
}

std::string numbered(char const* word, std::size_t number)
{
    return word + std::to_string(number);
}

void start(std::vector<char const*> const& arguments)
{
    int argc = static_cast<int>(arguments.size());
    char const* const* argv = arguments.data();
    InInitMgr::getInstance().initialize(argc, argv);
}

unsigned long takeOptions(std::size_t count)
{
    const Argument option("v", "d");
    std::vector<char const*> arguments(2 * count + 1, "-v");
    std::fill(arguments.begin() + static_cast<std::ptrdiff_t>(count) + 1, arguments.end(), "file");
    return stepsOf([&] { start(arguments); });
}

unsigned long addArgumentsOneByOne(std::size_t count)
{
    return stepsOf([count] {
        for (std::size_t i = 0; i < count; ++i)
            start({"file"});
    });
}

using Settings = std::vector<std::unique_ptr<InVariable<int>>>;

Settings makeSettings(std::size_t count, InPackageInit& package, InContextAliasBase const& source)
{
    Settings settings;
    for (std::size_t i = 0; i < count; ++i)
        settings.push_back(std::make_unique<InVariable<int>>(numbered("setting", i).c_str(), package, source));
    return settings;
}

/// First to last, which moves all the others if each leaves no hole.
unsigned long destroySettings(std::size_t count)
{
    VnTest::NumberedPackage<1> package("package");
    const Default source("1", "d");
    Settings settings = makeSettings(count, package, source);
    return stepsOf([&] {
        for (auto& setting : settings)
            setting.reset();
    });
}

unsigned long startSettings(std::size_t count)
{
    VnTest::NumberedPackage<1> package("package", {InInit<VnInit::initialize>::getType()});
    const Default source("1", "d");
    const Settings settings = makeSettings(count, package, source);
    return stepsOf([] { start({"prog"}); });
}

template <int... numbers>
std::vector<std::unique_ptr<InPackageInit>> makePackages(std::size_t count, std::integer_sequence<int, numbers...>)
{
    using Make = std::unique_ptr<InPackageInit> (*)();
    constexpr Make makers[] = {
        [] { return std::unique_ptr<InPackageInit>(new VnTest::NumberedPackage<numbers>("resident")); }...};
    std::vector<std::unique_ptr<InPackageInit>> packages;
    std::transform(makers, makers + count, std::back_inserter(packages), [](Make make) { return make(); });
    return packages;
}

/// Each as if it came with a library and left with it, while others stay.
unsigned long loadPackages(std::size_t count)
{
    start({"prog"});
    std::vector<std::unique_ptr<InPackageInit>> residents;
    {
        const InReinitGuard guard;
        residents = makePackages(count / 32, std::make_integer_sequence<int, 250>());
    }
    return stepsOf([count] {
        for (std::size_t i = 0; i < count; ++i) {
            std::unique_ptr<InPackageInit> package;
            const InReinitGuard guard;
            package = std::make_unique<VnTest::NumberedPackage<1000>>("guest");
        }
    });
}

unsigned long readEnvironment(std::size_t count)
{
    std::vector<std::unique_ptr<Environment>> sources;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = numbered("VN_TEST_", i);
        ::setenv(name.c_str(), "1", 1);
        sources.push_back(std::make_unique<Environment>(name.c_str(), "d"));
    }
    VnTest::NumberedPackage<1> package("package", {InInit<VnInit::initialize>::getType()});
    const Settings settings = makeSettings(count, package, *sources.front());
    return stepsOf([] { start({"prog"}); });
}

unsigned long readGroups(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += numbered("Group", i) + "=Tracing,";
    LgMajorGroup::initialize(nullptr);
    return stepsOf([&text] { LgMajorGroup::parse(text.c_str()); });
}

unsigned long findGroups(std::size_t count)
{
    readGroups(count);
    return stepsOf([count] {
        for (std::size_t i = 0; i < count; ++i)
            LgMajorGroup::getInstanceForName(numbered("Group", i).c_str());
    });
}

const struct
{
    char const* what;
    unsigned long (*run)(std::size_t count);
} rows[] = {
    {"options taken off the arguments", takeOptions},
    {"arguments added one by one", addArgumentsOneByOne},
    {"settings destroyed", destroySettings},
    {"settings started", startSettings},
    {"packages loaded and unloaded beside others", loadPackages},
    {"environment variables read", readEnvironment},
    {"groups read from a text", readGroups},
    {"groups found", findGroups},
};
}  // namespace

VN_CHILD(steps)
{
    std::cout << rows[std::stoul(argv[1])].run(std::stoul(argv[2])) << std::endl;
    std::_Exit(0);
}

TEST(Cost, growsWithTheInputAndNotWithItsSquare)
{
    for (std::size_t row = 0; row < std::size(rows); ++row) {
        SCOPED_TRACE(rows[row].what);
        const auto stepsFor = [row](int count) {
            const ChildRun run = Child("steps").arguments({std::to_string(row), std::to_string(count)}).run();
            const std::size_t line = run.out.find_last_of('\n', run.out.size() - 2);
            return std::stod(run.out.substr(line == std::string::npos ? 0 : line + 1));
        };
        const double few = stepsFor(2000), many = stepsFor(8000);
        // Four times as much, and a little for what grows with n log n; a square would take 16 times as much, and some
        // steps for each pair.
        EXPECT_LT(many, 6 * (few + 1000));
    }
}
