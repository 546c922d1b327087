// Settings beside the flags of gflags and Abseil: what a read costs, and what it takes to make and start a thousand of
// them, which happens once in a process and so has processes of its own.
//
//     benchsettings [ROUNDS]
#include "../rounds.h"
#include "../workfolder.h"

#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>

#include <absl/flags/flag.h>
#include <absl/time/time.h>
#include <benchmark/benchmark.h>
#include <gflags/gflags.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

DEFINE_int32(gflags_number, 17, "a setting");
DEFINE_bool(gflags_truth, true, "a setting");
DEFINE_string(gflags_text, "a text of a setting", "a setting");
DEFINE_double(gflags_real, 0.125, "a setting");
DEFINE_int64(gflags_large, 17, "a setting");
ABSL_FLAG(int, absl_number, 17, "a setting");
ABSL_FLAG(bool, absl_truth, true, "a setting");
ABSL_FLAG(std::string, absl_text, "a text of a setting", "a setting");
ABSL_FLAG(double, absl_real, 0.125, "a setting");
ABSL_FLAG(std::int64_t, absl_large, 17, "a setting");
ABSL_FLAG(absl::Duration, absl_time, absl::Milliseconds(1500), "a setting");

namespace
{
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

class Package : public Vn::InPackageInit
{
public:
    Package() : InPackageInit("benchSettings")
    {
        registerPackage();
        addDependencies<VnInit::initialize>();
    }
};

Package package;
const Default defaultNumber("17", "default"), defaultTruth("true", "default"),
    defaultText("a text of a setting", "default"), defaultReal("0.125", "default"), defaultTime("1.5s", "default");
const Vn::InVariable<int> number("number", package, defaultNumber);
const Vn::InVariable<bool> truth("truth", package, defaultTruth);
const Vn::InVariable<char const*> text("text", package, defaultText);
const Vn::InVariable<std::string> copy("copy", package, defaultText);
const Vn::InVariable<double> real("real", package, defaultReal);
const Vn::InVariable<long> large("large", package, defaultNumber);
const Vn::InVariable<std::chrono::milliseconds> pause("pause", package, defaultTime);

template <class Read>
VnBench::Rounds::Measure reading(Read const& read)
{
    return [read] {
        return VnBench::timeOfEach(10000, [&read] {
            benchmark::DoNotOptimize(read());
            benchmark::ClobberMemory();  // or one read would do for all
        });
    };
}

void compareReads(int rounds)
{
    VnBench::Rounds ints("read an int", "ns");
    ints.add("ours", reading([] { return number.getValue(); }));
    ints.add("gflags", reading([] { return FLAGS_gflags_number; }));
    ints.add("Abseil flags", reading([] { return absl::GetFlag(FLAGS_absl_number); }));
    ints.run(rounds);
    VnBench::Rounds bools("read a bool", "ns");
    bools.add("ours", reading([] { return truth.getValue(); }));
    bools.add("gflags", reading([] { return FLAGS_gflags_truth; }));
    bools.add("Abseil flags", reading([] { return absl::GetFlag(FLAGS_absl_truth); }));
    bools.run(rounds);
    VnBench::Rounds texts("read a text", "ns");
    texts.add("ours", reading([] { return text.getValue(); }));
    texts.add("gflags", reading([] { return FLAGS_gflags_text.c_str(); }));
    texts.add("Abseil flags", reading([] { return absl::GetFlag(FLAGS_absl_text); }));
    texts.run(rounds);
    VnBench::Rounds copies("read a std::string", "ns");
    copies.add("ours", reading([] { return copy.getValue(); }));
    copies.add("gflags", reading([] { return FLAGS_gflags_text; }));
    copies.add("Abseil flags", reading([] { return absl::GetFlag(FLAGS_absl_text); }));
    copies.run(rounds);
    VnBench::Rounds reals("read a double", "ns");
    reals.add("ours", reading([] { return real.getValue(); }));
    reals.add("gflags", reading([] { return FLAGS_gflags_real; }));
    reals.add("Abseil flags", reading([] { return absl::GetFlag(FLAGS_absl_real); }));
    reals.run(rounds);
    VnBench::Rounds longs("read a long", "ns");
    longs.add("ours", reading([] { return large.getValue(); }));
    longs.add("gflags", reading([] { return FLAGS_gflags_large; }));
    longs.add("Abseil flags", reading([] { return absl::GetFlag(FLAGS_absl_large); }));
    longs.run(rounds);
    VnBench::Rounds times("read a time", "ns");
    times.add("ours", reading([] { return pause.getValue(); }));
    times.add("Abseil flags", reading([] { return absl::GetFlag(FLAGS_absl_time); }));
    times.run(rounds);
}

/// Milliseconds that the program of that name, beside this one, measures.
double timeOfProgram(std::string const& name)
{
    static const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::FILE* const pipe = ::popen(("'" + (folder / name).string() + "'").c_str(), "r");
    double nanoseconds = 0;
    if (pipe == nullptr || std::fscanf(pipe, "%lf", &nanoseconds) != 1 || ::pclose(pipe) != 0) {
        std::fprintf(stderr, "benchsettings: can't run %s\n", name.c_str());
        std::exit(1);
    }
    return nanoseconds / 1e6;
}

/// Each in a process with a thousand settings less what the same process takes without.
void compareStarts(int rounds)
{
    VnBench::Rounds starts("make and start 1,000", "ms");
    VnBench::Rounds empty("the same without settings", "ms");
    const struct
    {
        char const* who;
        std::string program;
    } contestants[] = {{"ours", "ourssettings"}, {"gflags", "gflagssettings"}, {"Abseil flags", "abslsettings"}};
    for (auto const& contestant : contestants) {
        starts.add(contestant.who, [&contestant] { return timeOfProgram(contestant.program); });
        empty.add(contestant.who, [&contestant] { return timeOfProgram(contestant.program + "none"); });
    }
    starts.add("floor: the start, the stored texts", [] { return timeOfProgram("floorsettings"); });
    starts.run(rounds);
    empty.run(rounds);
}
}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 100;
    const VnBench::WorkFolder folder;
    int noArguments = 0;
    char const* const* noVector = nullptr;
    VnBench::Rounds::printHead();
    {
        const Vn::InInitGuard guard(noArguments, noVector);
        compareReads(rounds);
    }
    compareStarts(rounds);
    return 0;
}
