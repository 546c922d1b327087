// Mixes tracks, one of which is missing, and so crashes: docs/debugging.md looks into it with GDB. The messages of the run are
// still in the queue then, as the program writes them at its end.
#include <base/dttime.h>
#include <base/ininit.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/lgregistry.h>
#include <base/lgvalues.h>
#include <base/osfilepath.h>
#include <base/vector.h>

namespace VnInit
{
class mixdown
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::mixdown> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(mixdown, VnInit::base);
static Vn::InInit<VnInit::mixdown> mixdownPackage;

static Vn::InContextAlias<Vn::InInitEnv, 1> gainVariable("MIXDOWN_GAIN", "environment");
static Vn::InContextAlias<Vn::InInitDef, 0> gainDefault("80", "default");
static Vn::InVariable<int> gain("mixdown.gain", mixdownPackage, gainVariable, gainDefault);

struct Track
{
    int number;
    Vn::OsFilePath file;
    Vn::DtTime start;
    Vn::Vector<double> peaks;
};

static double mix(Vn::LgMinorGroup const& group, Track const* track)
{
    VN_LOG(group, Vn::LgTypes::Warning,
           "mixes track " << track->number << ", " << track->file << ", from " << track->start);
    double sum = 0.0;
    for (double peak : track->peaks)
        sum += peak * gain.getValue() / 100.0;
    return sum;
}

int main(int argc, char** argv)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    static Vn::LgQueue queue(1);
    Vn::LgLog::getRegistry()->registerQueue(&queue);
    Vn::LgLog::setQueueFunction([] { return &queue; });
    Vn::LgLog::setLoggerActivation(true);

    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Mixdown"), "Mixer");
    const Track drums{1, "takes/drums.wav", Vn::DtTime(100, 25, 1), {0.5, 0.75}};
    const Track bass{2, "takes/bass.wav", Vn::DtTime(1001, 30000, 1001), {0.25}};
    double sum = 0.0;
    for (Track const* track : Vn::Vector<Track const*>{&drums, &bass, nullptr})
        sum += mix(group, track);
    VN_LOG(group, Vn::LgTypes::Warning, "sum " << sum);
    Vn::LgReader().flushAll();
}
