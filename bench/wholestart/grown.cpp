// What a program costs from its first package or setting to the end of the start, with as many of both as its arguments say:
// packages that depend on ten others each, and settings from the environment with a default; or, beside it, subsystems of a
// POCO application and flags of gflags. Prints the nanoseconds.
//
//     startgrown ours|peers PACKAGES SETTINGS
#include "../manypackages.h"

#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include <Poco/Util/Application.h>
#include <Poco/Util/Subsystem.h>
#include <gflags/gflags.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
using Clock = std::chrono::steady_clock;
using Variable = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

struct Setting
{
    Setting(std::string const& name, Vn::InPackageInitBase& package)
        : variable(name.c_str(), "a setting"),
          byDefault("17", "default"),
          value(name.c_str(), package, variable, byDefault)
    {}

    Variable variable;
    Default byDefault;
    Vn::InVariable<int> value;
};

std::vector<std::string> numbered(char const* word, std::size_t count)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i)
        names.push_back(word + std::to_string(i));
    return names;
}

/// The names are made before the time begins: a program has them in its text.
void startOurs(std::size_t packageCount, std::size_t settingCount)
{
    const std::vector<std::string> packageNames = numbered("package", packageCount);
    const std::vector<std::string> settingNames = numbered("SETTING_", settingCount);
    std::vector<VnBench::PackageType> const& types = VnBench::getPackageTypes();
    std::vector<std::unique_ptr<Vn::InPackageInit>> packages(packageCount);
    std::vector<std::unique_ptr<Setting>> settings(settingCount);
    std::mt19937 random(1);

    const Clock::time_point begun = Clock::now();
    for (std::size_t i = 0; i < packageCount; ++i) {
        VnBench::Needs dependencies = {Vn::InInit<VnInit::initialize>::getType()};
        for (int k = 0; k < 10 && i > 0; ++k)
            dependencies.push_back(types[random() % i].type);
        packages[i].reset(types[i].make(packageNames[i].c_str(), dependencies));
    }
    for (std::size_t i = 0; i < settingCount; ++i)
        settings[i] = std::make_unique<Setting>(settingNames[i], *packages[i % packageCount]);
    int argc = 0;
    char const* const* argv = nullptr;
    Vn::InInitMgr::getInstance().initialize(argc, argv);
    std::printf("%f\n", std::chrono::duration<double, std::nano>(Clock::now() - begun).count());
}

class PeerSubsystem : public Poco::Util::Subsystem
{
public:
    char const* name() const override { return "subsystem"; }

protected:
    void initialize(Poco::Util::Application&) override {}
    void uninitialize() override {}
};

/// In the order in which they were added: a POCO application knows no dependencies.
void startPeers(std::size_t packageCount, std::size_t settingCount)
{
    const std::vector<std::string> settingNames = numbered("setting_", settingCount);
    std::vector<GFLAGS_NAMESPACE::int32> values(2 * settingCount, 17);
    int argc = 1;
    char name[] = "startgrown";
    char* arguments[] = {name, nullptr};
    char** argv = arguments;

    const Clock::time_point begun = Clock::now();
    Poco::AutoPtr<Poco::Util::Application> application = new Poco::Util::Application;
    for (std::size_t i = 0; i < packageCount; ++i)
        application->addSubsystem(new PeerSubsystem);
    for (std::size_t i = 0; i < settingCount; ++i)
        GFLAGS_NAMESPACE::FlagRegisterer(settingNames[i].c_str(), "a setting", "grown.cpp", &values[2 * i],
                                         &values[2 * i + 1]);
    GFLAGS_NAMESPACE::ParseCommandLineFlags(&argc, &argv, true);
    application->init(argc, argv);
    std::printf("%f\n", std::chrono::duration<double, std::nano>(Clock::now() - begun).count());
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    const std::size_t packages = std::stoul(argv[2]);
    const std::size_t settings = std::stoul(argv[3]);
    if (packages == 0 || packages > VnBench::packageTypeCount)
        return 2;
    if (std::string(argv[1]) == "ours")
        startOurs(packages, settings);
    else
        startPeers(packages, settings);
    std::fflush(stdout);
    std::_Exit(0);  // only the start counts
}
