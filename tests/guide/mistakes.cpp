// mistakes CASE: makes one mistake of the guide's pages, and prints what the library says to it. Each page has a table of
// such messages; checkguide.py compares them, by the list in mistakes.txt.
#include <base/dtreftimefactory.h>
#include <base/dttimemark.h>
#include <base/dttimeutil.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/insingleton.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/lgqueue.h>
#include <base/lgreader.h>
#include <base/lgregistry.h>
#include <base/lgtext.h>
#include <base/osdateutil.h>
#include <base/osdirectory.h>
#include <base/osenv.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>
#include <base/osprocess.h>
#include <base/ossharedlib.h>
#include <base/rngaussianrng.h>
#include <base/rnhistogram.h>
#include <base/rnlecuyeruniformrng.h>
#include <base/rnseparablemultirng.h>
#include <base/rnvandercorputrng.h>
#include <base/testgroup.h>
#include <base/trace.h>
#include <base/vector.h>
#include <threadlog/threadlog.h>

#include <cmath>
#include <functional>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

/// Made by no package.
struct Lamp
{};

namespace VnInit
{
class reel
{};
class sound
{};
class picture
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::reel> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};
template <>
class Vn::InInit<VnInit::sound> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};
template <>
class Vn::InInit<VnInit::picture> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};
VN_DEFINE_PACKAGE(reel, VnInit::base);
VN_DEFINE_PACKAGE(sound, VnInit::picture);
VN_DEFINE_PACKAGE(picture, VnInit::sound);

namespace
{
using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Environment = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;

class Sorting : public Vn::TestGroup
{
public:
    Sorting() : TestGroup("sorting") {}
    void execute(int, char** const) override {}
};

/// The library's start and stop around what a case does.
class Started
{
public:
    Started() : _guard(_argc, _argv) {}

private:
    int _argc = 0;
    char const* const* _argv = nullptr;
    Vn::InInitGuard _guard;
};

/// What isn't an exception is printed as one.
[[noreturn]] void show(std::string const& text)
{
    throw std::runtime_error(text);
}

std::string textOf(double number)
{
    std::ostringstream stream;
    stream << std::setprecision(5) << number;
    return stream.str();
}

/// Puts messages into a queue that is read only afterwards.
void logBeforeReading(int count, std::string const& text)
{
    const Started started;
    static Vn::LgQueue* const queue = new Vn::LgQueue;
    Vn::LgLog::getRegistry()->registerQueue(queue);
    Vn::LgLog::setQueueFunction([] { return queue; });
    Vn::LgLog::setLoggerActivation(true);
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Mistakes"), "Mistake");
    for (int i = 0; i < count; ++i)
        VN_LOG(group, Vn::LgTypes::Warning, text);
    Vn::LgReader reader;
    reader.flushAll();
    VN_LOG(group, Vn::LgTypes::Warning, "the next one");
    queue->creatorExit();
    reader.flushAll();
    Vn::LgLog::setLoggerActivation(false);
    Vn::LgLog::setQueueFunction(nullptr);
    show("all is read");
}

template <class Package>
void startWith()
{
    const Vn::InInit<Package> package;
    const Started started;
}

Vn::OsFilePath writtenFile()
{
    Vn::OsFsUtils::createFile("written", Vn::OsFileTypes::Permissions(), false);
    return Vn::OsFilePath("written");
}

const std::map<std::string, std::function<void()>> cases = {
    // errors.md
    {"nullPath", [] { const Vn::OsFileReader reader{Vn::OsFilePath()}; }},
    {"longVector", [] { Vn::Vector<double>().reserve(Vn::Vector<double>().max_size() + 1); }},

    // packages.md
    {"missingPackage", startWith<VnInit::sound>},
    {"cycle",
     [] {
         const Vn::InInit<VnInit::sound> sound;
         startWith<VnInit::picture>();
     }},
    {"latePackage",
     [] {
         const Started started;
         const Vn::InInit<VnInit::reel> package;
     }},
    {"lampTooEarly", [] { Vn::InSingleton<Lamp>::getInstance(); }},
    {"secondLamp",
     [] {
         Vn::InSingleton<Lamp>::initialize(new Lamp);
         const std::unique_ptr<Lamp> second(new Lamp);
         try {
             Vn::InSingleton<Lamp>::initialize(second.get());
         } catch (...) {
             Vn::InSingleton<Lamp>::finalize();
             throw;
         }
     }},
    {"stopBeforeStart", [] { Vn::InInitMgr::getInstance().finalize(); }},
    {"secondStop",
     [] {
         {
             const Started started;
         }
         Vn::InInitMgr::getInstance().finalize();
     }},

    // settings.md
    {"earlyRead",
     [] {
         Vn::InInit<VnInit::reel> package;
         const Vn::InVariable<int> depth("reel.depth", package, Default("3", "default"));
         depth.getValue();
     }},
    {"sameHandle",
     [] {
         Vn::InInit<VnInit::reel> package;
         const Vn::InVariable<int> depth("reel.depth", package, Default("3", "default"));
         const Vn::InVariable<int> again("reel.depth", package, Default("4", "default"));
     }},
    {"sameOption",
     [] {
         const Option depth("d:", "-d LEVELS: how deep to look");
         const Option duration("d:", "-d SECONDS: how long");
     }},
    {"lateOverride",
     [] {
         Vn::InInit<VnInit::reel> package;
         const Vn::InVariable<int> depth("reel.depth", package, Default("3", "default"));
         const Started started;
         Vn::InVariableBase::overrideViaHandle("reel.depth", "4", "too late");
     }},
    {"lateSource",
     [] {
         const Started started;
         const Environment depth("REEL_DEPTH", "how deep to look");
     }},

    // logging.md
    {"unknownTraceOption", [] { Vn::Trace::setOptions("loud"); }},
    {"earlyThreadLog", [] { const Vn::ThreadLog log; }},
    {"secondThreadLog",
     [] {
         const Started started;
         const Vn::ThreadLog log, second;
     }},
    {"overflow", [] { logBeforeReading(1034, "text"); }},
    {"longMessage", [] { logBeforeReading(1, std::string(40000, 'x')); }},

    // files.md
    {"nothingThere", [] { Vn::OsFile(Vn::OsFilePath("missing")).isFile(); }},
    {"copyOntoItself", [] { Vn::OsFile(writtenFile()).copyTo(Vn::OsFilePath("written")); }},
    {"folderWhereAFileIs", [] { Vn::OsFsUtils::createDir(writtenFile().getChars(), false); }},
    {"absoluteTail", [] { Vn::OsFilePath("a") + Vn::OsFilePath::getRootDir(); }},
    {"separatorInAName",
     [] { Vn::OsFilePath("a") + (std::string("b") + Vn::OsFilePath::getSeparator() + "c").c_str(); }},
    {"missingFile", [] { const Vn::OsFileReader reader(Vn::OsFilePath("missing")); }},
    {"fileIsThere", [] { const Vn::OsFileWriter writer(writtenFile(), Vn::OsFileTypes::Permissions(), true); }},
    {"fullFolder",
     [] {
         Vn::OsFsUtils::createDir("full", false);
         Vn::OsFsUtils::createFile("full/file", Vn::OsFileTypes::Permissions(), false);
         Vn::OsFsUtils::removeDir("full");
     }},

    // system.md
    {"missingFunction",
     [] {
         const std::string name = std::string("libVNbase") + Vn::OsSharedLib::getSuffix();
         const Vn::ObjPtr<Vn::OsSharedLib> library = Vn::OsSharedLib::open(name.c_str());
         library->getFunction("noSuchFunction");
     }},
    {"missingLibrary", [] { Vn::OsSharedLib::open("/missing"); }},
    {"noDate", [] { Vn::OsDateUtil::convertToDateStruct(Vn::OsDateTypes::DateRep(), Vn::OsDateTypes::UTCTime); }},
    {"noName", [] { Vn::OsEnv::putVariable("=value"); }},
    {"missingProgram",
     [] {
         char const* const command[] = {"no-such-program", nullptr};
         Vn::OsProcess().start(command);
     }},

    // streamtime.md
    {"zeroDenominator", [] { const Vn::Rational rate(25, 0); }},
    {"zeroRate", [] { const Vn::DtTime time(100, 0, 1); }},
    {"malformedRate", [] { Vn::DtTimeUtil::getDtTimeFromDtString("100 fast 1"); }},
    {"longRate", [] { Vn::DtTimeUtil::getDtTimeFromDtString("100 99999999999 1"); }},
    {"shortText", [] { Vn::DtTimeUtil::getDtTimeFromDtString("100 25"); }},
    {"earlyClock", [] { Vn::DtRefTimeFactory::getInstance(); }},

    // sampling.md: no exceptions, but results that nobody expects
    {"noRepeat",
     [] {
         Vn::RnLecuyerUniformRng<double> uniform;
         const double first = uniform();
         uniform.restart();
         show("drawn " + textOf(first) + ", and after restart() " + textOf(uniform()));
     }},
    {"repeatedSource",
     [] {
         // The source as both coordinates: every point lies on the lines that two neighbours of the sequence make.
         Vn::RnVanDerCorputRng<double> source(2);
         Vn::RnSeparableBiRng<double> points(&source);
         int above = 0;
         for (int i = 0; i < 1000; ++i) {
             double x = 0.0, y = 0.0;
             points.getSample(x, y);
             above += x > 0.5 && y > 0.5;
         }
         show(std::to_string(above) + " of 1000 points in the upper right quarter");
     }},
    {"outside",
     [] {
         Vn::RnHistogram<double> histogram(4, 0.0, 1.0);
         histogram.addSample(1.0, 1.0);
         show("one sample added, total " + textOf(histogram.getTotal()));
     }},
    {"deadSource",
     [] {
         Vn::RnVanDerCorputRng<double> source(1);
         Vn::RnGaussianRng<double> gaussian(&source);
         show(std::isnan(gaussian()) ? "nan" : "a number");
     }},

    // testing.md
    {"sameGroup",
     [] {
         // Groups outlive the run: a destroyed one stays registered.
         static const Sorting first;
         const Sorting second;
     }},
};
}  // namespace

int main(int argc, char** argv)
{
    const auto found = cases.find(argc > 1 ? argv[1] : "");
    if (found == cases.end()) {
        std::cerr << "mistakes: no such case\n";
        return 2;
    }
    try {
        found->second();
        std::cerr << "mistakes: no mistake\n";
        return 3;
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << "\n";
        return 0;
    }
}
