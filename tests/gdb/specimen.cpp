// A program for the debugger to look into: values of each class that has a printer, and queues, packages and settings in each
// state. It stops in a function whose name the test knows; its argument says where.
//
//     specimen values      everything runs, and stands still
//     specimen start       within a package's start
//     specimen stop        within a package's stop
//     specimen failed      a package has refused to start
//     specimen waiting     before the start, twice: without and with overrides
//     specimen registry    with a registry of the program's own
//     specimen thread      before and behind a message of a program with the thread layer
//     specimen crash       null is read, in the middle of a message
#include <base/arrayptr.h>
#include <base/dtex.h>
#include <base/dttime.h>
#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/exsyserror.h>
#include <base/inex.h>
#include <base/ininit.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/interval.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/lgregistry.h>
#include <base/list.h>
#include <base/objptr.h>
#include <base/osfilepath.h>
#include <base/rational.h>
#include <base/vector.h>

#include <threadlog/threadlog.h>

#include <cerrno>
#include <string>

/// Where the test looks. The compiler must neither inline it nor know what it does.
extern "C" [[gnu::noinline]] void standStill(char const* where)
{
    asm volatile("" : : "r"(where) : "memory");
}

namespace VnInit
{
class palette
{};
class swatches
{};
}  // namespace VnInit

template <>
class Vn::InInit<VnInit::palette> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
    void performInitialize() override;
    void performFinalize() override;
};

template <>
class Vn::InInit<VnInit::swatches> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

VN_DEFINE_PACKAGE(palette, VnInit::base);
VN_DEFINE_PACKAGE(swatches, VnInit::palette);

static Vn::InInit<VnInit::palette> palettePackage;
static Vn::InInit<VnInit::swatches> swatchesPackage;

static Vn::InContextAlias<Vn::InInitArg, 1> depthOption("d:", "-d LEVELS");
static Vn::InContextAlias<Vn::InInitEnv, 1> nameVariable("PALETTE_NAME", "environment");
static Vn::InContextAlias<Vn::InInitEnv, 1> unsetVariable("PALETTE_UNSET", "environment");
static Vn::InContextAlias<Vn::InInitDef, 0> depthDefault("3", "default");
static Vn::InContextAlias<Vn::InInitDef, 0> ditherDefault("true", "default");
static Vn::InVariable<int> depth("palette.depth", palettePackage, depthOption, depthDefault);
static Vn::InVariable<char const*> name("palette.name", palettePackage, nameVariable);
static Vn::InVariable<bool> dither("palette.dither", palettePackage, ditherDefault);
static Vn::InVariable<int> taken("palette.taken", palettePackage, depthDefault);
static Vn::InVariable<int> unset("palette.unset", palettePackage, unsetVariable);

static std::string wanted;

void Vn::InInit<VnInit::palette>::performInitialize()
{
    if (wanted == "start")
        standStill("in a start");
    if (wanted == "failed")
        throw Vn::InEx::ExPackageInitError("specimen.cpp", 77, "palette");
}

void Vn::InInit<VnInit::palette>::performFinalize()
{
    if (wanted == "stop")
        standStill("in a stop");
}

/// A class of the program's own that derives from a class of the library.
class PaletteError : public Vn::ExInternalError
{
public:
    PaletteError(int color) : ExInternalError("palette.cpp", 12, "no such color"), _color(color) {}

    int _color;
};

static Vn::LgQueue queue(0x1a2b);

static void put(Vn::LgQueue& into, Vn::LgTypes::Level level, std::string const& text)
{
    if (into.reserveEntry(level)) {
        into.getStream() << text.c_str() << Vn::ends;
        into.addEntry();
    }
}

static void takeOne(Vn::LgQueue& from)
{
    static char text[32768];
    if (!from.readEntry().isOverflowEntry())
        from.getStream() >> text;
    from.removeEntry();
}

/// What the queues hold when the reader is away: wrapped rings, losses, a text that the reader has, one that isn't finished.
static void fillQueues()
{
    static Vn::LgQueue wrapped(0x2), full(0x3), halfRead(0x4), unfinished(0x5), empty(0x6);
    for (Vn::LgQueue* each : {&queue, &wrapped, &full, &halfRead, &unfinished, &empty})
        Vn::LgLog::getRegistry()->registerQueue(each);

    put(queue, Vn::LgTypes::Warning, "Cache evicted 17 pages");
    put(queue, Vn::LgTypes::InternalError, "Cache line\nfeed \033[31m \xff");

    // Both rings wrap: 1,500 messages of 30 characters are more than 1,024 entries and 32,768 characters.
    for (int i = 0; i < 1500; ++i) {
        put(wrapped, Vn::LgTypes::Tracing, "wrapped " + std::to_string(i) + std::string(18, '.'));
        if (i < 1498)
            takeOne(wrapped);
    }
    // Its text goes round the end of the ring.
    put(wrapped, Vn::LgTypes::Tracing, std::string(20500, 'x') + "across");

    for (int i = 0; i < 1030; ++i)
        put(full, Vn::LgTypes::Informational, "full " + std::to_string(i));
    while (!full.readEntry().isOverflowEntry())
        takeOne(full);

    put(halfRead, Vn::LgTypes::FatalError, "taken");
    put(halfRead, Vn::LgTypes::RecoverableError, "left");
    char text[32];
    halfRead.getStream() >> text;

    put(unfinished, Vn::LgTypes::Profiling, "finished");
    unfinished.reserveEntry(Vn::LgTypes::Warning);
    unfinished.getStream() << "begun " << 1;
}

/// A registry of the program's own.
class OwnRegistry : public Vn::LgRegistry
{
public:
    void registerQueue(Vn::LgQueue* each) override { _queues.push_back(each); }
    void deregisterQueue(Vn::LgQueue* each) override { _queues.remove(each); }
    Vn::List<Vn::LgQueue*> getQueueList() const override { return _queues; }

private:
    Vn::List<Vn::LgQueue*> _queues;
};

/// Called by the test in the stopped program.
extern "C" [[gnu::used]] void flushQueues()
{
    Vn::LgReader().flushAll();
}

[[gnu::noinline]] static void crash(Vn::LgMinorGroup const& group, int volatile* place)
{
    VN_LOG(group, Vn::LgTypes::Warning, "before");
    VN_LOG(group, Vn::LgTypes::Warning, "reads " << *place);
}

/// Objects that the test prints. Used, so that an optimised build has them in memory, too.
[[gnu::used]] static Vn::ObjPtr<int> number(new int(42));
[[gnu::used]] static Vn::ObjPtr<int> noNumber;
[[gnu::used]] static Vn::ObjPtrRet<Vn::Rational> returned(new Vn::Rational(30000, 1001));
[[gnu::used]] static Vn::ArrayPtr<char> text(Vn::duplicateString("a \"text\""));
[[gnu::used]] static Vn::ArrayPtr<char> noText;
[[gnu::used]] static Vn::ArrayPtrRet<int> numbers(new int[2]{7, 8});
[[gnu::used]] static Vn::Vector<int> vector{1, 2, 3};
[[gnu::used]] static Vn::Vector<bool> bits{true, false, true};
[[gnu::used]] static Vn::Vector<Vn::Rational> rates{Vn::Rational(25, 1), Vn::Rational(24, 1)};
[[gnu::used]] static Vn::Vector<int> noVector;
[[gnu::used]] static Vn::List<double> doubles{0.5, 1.5};
[[gnu::used]] static Vn::List<char> characters{'a', 'b'};
[[gnu::used]] static Vn::List<int> noList;
[[gnu::used]] static Vn::InInitMgr const& manager = Vn::InInitMgr::getInstance();
[[gnu::used]] static Vn::Rational rate(30000, 1001);
[[gnu::used]] static Vn::DtTimeIndex timeIndex(-7);
[[gnu::used]] static Vn::DtTime timeOfFrame(100, 25, 1);
[[gnu::used]] static Vn::DtTime oddTime(1, 30000, 1001);
[[gnu::used]] static Vn::Interval<double> interval(0.25, 2.0);
[[gnu::used]] static Vn::Interval<Vn::DtTimeIndex> frames(Vn::DtTimeIndex(3), Vn::DtTimeIndex(9));
[[gnu::used]] static Vn::OsFilePath path("/tmp/a file");
[[gnu::used]] static Vn::ExInternalError failure("library.cpp", 5, "it \"failed\"");
[[gnu::used]] static Vn::DtEx::BadRate badRate("library.cpp", 6);
[[gnu::used]] static PaletteError paletteError(9);
[[gnu::used]] static Vn::ExBase const& thrown = paletteError;

int main(int argc, char** argv)
{
    wanted = argc > 1 ? argv[1] : "";
    errno = ENOENT;
    static Vn::ExSysErrorANSI systemError("library.cpp", 8);
    Vn::Rational const& reference = rate;
    Vn::ExBase const* const pointer = &systemError;
    asm volatile("" : : "r"(&number), "r"(&reference), "r"(pointer), "r"(&frames), "r"(&thrown) : "memory");

    if (wanted == "waiting") {
        put(Vn::LgLog::getQueue(), Vn::LgTypes::Warning, "of a program without threads");
        standStill("before the start");
    }
    Vn::InVariableBase::overrideViaHandle("palette.taken", "12", "test");
    Vn::InVariableBase::overrideViaHandle("nobody.takes", "this", "test");
    if (wanted == "waiting")
        standStill("with overrides");

    static char const* arguments[] = {"specimen", "-d", "5"};
    int count = 3;
    char const* const* list = arguments;
    try {
        Vn::InInitMgr::getInstance().initialize(count, list);
    } catch (Vn::InEx const&) {
        standStill("behind a failure");
        return 0;
    }
    if (wanted == "thread") {
        Vn::ThreadLog log;
        const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Specimen"), "Thread");
        standStill("before a message");
        VN_LOG(group, Vn::LgTypes::Warning, "not seen by the reader");
        standStill("behind a message");
        return 0;
    }
    if (wanted == "registry") {
        put(queue, Vn::LgTypes::Warning, "kept elsewhere");
        Vn::LgLog::setRegistry(Vn::ObjPtr<Vn::LgRegistry>(new OwnRegistry));
        Vn::LgLog::getRegistry()->registerQueue(&queue);
        standStill("with a registry");
        return 0;
    }
    fillQueues();
    if (wanted == "values")
        standStill("with values");
    if (wanted == "crash") {
        Vn::LgLog::setQueueFunction([] { return &queue; });
        Vn::LgLog::setLoggerActivation(true);
        const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Specimen"), "Crash");
        crash(group, nullptr);
    }
    Vn::InInitMgr::getInstance().finalize();
    standStill("behind the stop");
}
