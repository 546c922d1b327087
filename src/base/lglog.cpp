// Where each level goes, from the environment to open files.
//
// init() reads the output variables into `_level` (readOutputs), then thresholds and switches (readSettings), and
// then opens each level's file (openOutput). Levels of one file share one stream: the lowest level owns it, opens it
// once and writes one banner. closeOutput() and destroy() undo that: they clear the stream in all higher levels
// before it is deleted.
//
// init(), destroy() and a reader that writes a line exclude each other by LgOutputLock, so no line is written to a
// stream that is being closed. Messages are not held up: a site reads only the switches, which are relaxed atomics,
// and the queue function. The inter-process lock is taken inside the output lock, for one banner or one line at a
// time.
#include <base/lglog.h>

#include <base/duplicatestring.h>
#include <base/exsyserror.h>
#include <base/hwcounter.h>
#include <base/lgfile_p.h>
#include <base/lgoutputlock_p.h>
#include <base/neverdestroyed_p.h>
#include <base/osenv_p.h>
#include <base/osfilepath.h>
#include <base/osfsutils.h>
#include <base/relaxed_p.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>

namespace Vn
{
namespace
{
constexpr int levelCount = 7;

/// The default paths, owned. A level's `fileName` may point to one, or into the environment.
char* profilePath = nullptr;
char* eventsPath = nullptr;

/// The queue function until the program brings one. Its queue is in no registry, so no reader sees it: that is
/// required of a program without a thread layer, which has no reader.
LgQueue* getSharedQueue()
{
    static LgQueue* const queue = new LgQueue(0);
    return queue;
}

/// Values from outside the enumeration come from clients and must not index the table.
bool isLevel(LgTypes::Level level)
{
    return level >= 0 && level < levelCount;
}

/// Takes both paths over; null twice frees what there is.
void setDefaultPaths(char* profile, char* events)
{
    delete[] profilePath;
    delete[] eventsPath;
    profilePath = profile;
    eventsPath = events;
}

/// Makes the directory of the default files and both paths. False, with both paths null, if the system refuses; what
/// createDir() throws besides reaches the caller.
bool makeDefaultPaths()
{
    char const* const variable = System::getOwnVariable("T4Q_TEST_DIR");
    const OsFilePath directory =
        variable != nullptr && *variable != '\0' ? OsFilePath(variable) : OsFilePath::getTempDir();
    setDefaultPaths(nullptr, nullptr);
    try {
        OsFsUtils::createDir(directory.getChars(), true);
    } catch (ExSysErrorWindows const&) {
        return false;
    }
    ArrayPtr<char> profile = duplicateString((directory + "prof.log").getChars());
    ArrayPtr<char> events = duplicateString((directory + "events.log").getChars());
    setDefaultPaths(profile.release(), events.release());
    return true;
}

/// The text at the beginning of a file.
std::string makeStartBanner(bool hasTime)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());  // not the program's: whoever reads logs reads all machines' logs
    text << "===== Message Logger Startup =====\n";
    if (!hasTime)
        return text.str();
    const std::time_t now = std::time(nullptr);
    // ctime() brings a line end of its own, so an empty line follows.
    text << "===== Started on " << std::ctime(&now) << '\n';
    // Intended: the number behind this title is the resolution, in seconds for each count. Part of the interface; do
    // not mend.
    text << "===== Clock Frequency: " << std::fixed << std::setprecision(9) << HwCounter::resolution() << '\n';
    return text.str();
}

/// In one piece, so that where the disk is full all of it waits together.
void writeStartBanner(LgFile& file, bool hasTime)
{
    file.writeLines(makeStartBanner(hasTime));
    if (hasTime)
        file << std::fixed;  // stays set; part of the interface
}

/// The one downcast of the logger: openOutput() makes every stream, and makes it as an LgFile; the type of the field is that
/// of the interface.
LgFile* fileOf(LgLog::LevelInfo const& level)
{
    return static_cast<LgFile*>(level.output);
}

/// By address: a user may name the same file.
bool isDefaultPath(char const* path)
{
    return path == eventsPath || path == profilePath;
}
}  // namespace

/// All zero before init(): messages of a logger that hasn't started go to no file.
LgLog::LevelInfo LgLog::_level[levelCount] = {};
bool LgLog::_loggerActive = false;
bool LgLog::_blockingTrace = false;
bool LgLog::_logTimeStamps = true;
std::uint64_t LgLog::_start = 0;
LgQueue* (*LgLog::_queueFunction)() = getSharedQueue;
// A reader may be at work while static objects are destroyed. Exported: a debugger finds the queues in a program without
// debug symbols.
VN_NEVER_DESTROYED_MEMBER(ObjPtr<LgRegistry>, registryStorage, "_ZN2Vn5LgLog9_registryE", VN_BASE_EXPORT);
VN_NEVER_DESTROYED_MEMBER(ObjPtr<LgInterProcessLock>, interprocessLockStorage, "_ZN2Vn5LgLog17_interprocessLockE");

/// Order matters: the threshold must be known before groups are made, and the lock before files are opened.
void LgLog::init()
{
    const LgOutputLock outputs;
    _registry.reset(new LgSimpleRegistry);
    forgetOutputs();
    try {
        readOutputs(makeDefaultPaths());
        readSettings();
        _start = HwCounter::timeStamp();
        for (LevelInfo& level : _level)
            openOutput(&level);
    } catch (...) {
        // A package whose start fails isn't stopped, so nobody would call destroy().
        forgetOutputs();
        throw;
    }
}

/// Closes without a banner what an init() has left.
void LgLog::forgetOutputs()
{
    for (LevelInfo& level : _level) {
        closeOutput(&level);
        level = {};  // its name may point to a default path
    }
    setDefaultPaths(nullptr, nullptr);
}

/// The defaults where a variable is unset: tracing goes to standard output alone, profiling to a file of its own, all
/// else to one file.
void LgLog::readOutputs(bool hasDirectory)
{
    static constexpr char const* variables[levelCount] = {
        "VN_LOG_INTERNAL_ERROR", "VN_LOG_FATAL_ERROR", "VN_LOG_RECOVERABLE_ERROR", "VN_LOG_WARNING",
        "VN_LOG_INFORMATIONAL",  "VN_LOG_TRACING",     "VN_LOG_PROFILING"};
    // Intended: profiling before tracing; the order of reading is part of the interface. Do not mend.
    for (const LgTypes::Level level :
         {LgTypes::InternalError, LgTypes::FatalError, LgTypes::RecoverableError, LgTypes::Warning,
          LgTypes::Informational, LgTypes::Profiling, LgTypes::Tracing}) {
        char const* const value = System::getOwnVariable(variables[level]);
        _level[level] = parseEnvVar(value);
        if (value != nullptr)
            continue;
        if (level == LgTypes::InternalError)
            _level[level].enabled = hasDirectory;
        else if (level == LgTypes::Tracing)
            _level[level] = {true, true, false, nullptr, nullptr};
        else if (level == LgTypes::Profiling)
            _level[level] = {hasDirectory, false, false, nullptr, profilePath};
    }
}

/// A word that names no level is passed over without a message. Intended: a wrong threshold must not stop a program;
/// do not mend.
void LgLog::readSettings()
{
    if (char const* const word = System::getOwnVariable("VN_LOG_DEFAULT_LEVEL"))
        for (int i = 0; i < levelCount; ++i)
            if (std::strcmp(word, LgTypes::levelToString(LgTypes::Level(i))) == 0)
                LgMajorGroup::setDefaultThreshold(LgTypes::Level(i));
    LgMajorGroup::initialize(System::getOwnVariable("VN_LOG_GROUPS"));
    setBlockingTrace(System::getOwnVariable("VN_BLOCKING_TRACE") != nullptr);
    if (char const* const name = System::getOwnVariable("VN_INTERNAL_INTERPROCESS_LOG_LOCK"))
        _interprocessLock.reset(LgInterProcessLock::create(name));
    if (System::getOwnVariable("VN_LOG_DISABLE_TIMESTAMPS") != nullptr)
        disableTimeStamps();
}

/// The value of an output variable; docs/logging.md has the table. The name points into the environment and isn't
/// copied.
LgLog::LevelInfo LgLog::parseEnvVar(char const* value)
{
    if (value == nullptr)
        return {true, false, false, nullptr, eventsPath};
    // Whatever follows the two dashes; one dash begins a name.
    if (std::strncmp(value, "--", 2) == 0)
        return {false, false, false, nullptr, nullptr};
    const auto orNull = [](char const* name) { return *name != '\0' ? name : nullptr; };
    // Intended: "%+" names a file with an empty name, which fails to open, whereas "%" and "+" name none. Do not
    // mend.
    if (value[0] == '%' && value[1] == '+')
        return {true, true, true, nullptr, value + 2};
    if (value[0] == '%')
        return {true, true, false, nullptr, orNull(value + 1)};
    if (value[0] == '+')
        return {true, false, true, nullptr, orNull(value + (value[1] == '+' ? 2 : 1))};
    return {true, false, false, nullptr, value};
}

/// Levels that name one file share its stream, even if they name it in two ways. So the name is compared first, and
/// once the file is open its identity.
void LgLog::openOutput(LevelInfo* level)
{
    if (level->fileName == nullptr)
        return;
    // The same name needs no second opening.
    for (LevelInfo const* lower = _level; lower != level; ++lower)
        if (lower->fileName != nullptr && std::strcmp(lower->fileName, level->fileName) == 0) {
            level->output = lower->output;
            return;
        }
    // A default file is opened only if it is our own; see LgFile::Origin. A user who names the same file has chosen
    // it, links and all, for every level that writes to it.
    const auto names = [level](LevelInfo const& other) {
        return other.fileName != nullptr && !isDefaultPath(other.fileName) &&
               std::strcmp(other.fileName, level->fileName) == 0;
    };
    const bool isNamed = std::any_of(_level, _level + levelCount, names);
    const LgFile::Origin origin = isNamed ? LgFile::Origin::Named : LgFile::Origin::Default;
    ObjPtr<LgFile> file(new LgFile(level->fileName, origin, _interprocessLock.get() != nullptr));
    for (LevelInfo const* lower = _level; lower != level; ++lower)
        if (lower->output != nullptr && file->getIdentity() &&
            fileOf(*lower)->getIdentity() == file->getIdentity()) {
            level->output = lower->output;
            return;
        }
    LgFile& opened = *file;
    level->output = file.release();
    // From here on other processes that write this file wait.
    const LgInterProcessLockGuard guard(_interprocessLock.get());
    // Emptied under the lock: no other process is within a line.
    if (!level->append)
        opened.beginAnew();
    writeStartBanner(opened, isTimeStampsEnabled());
}

/// Leaves registry, lock and queues: a reader that comes later reads its messages and finds no output for them.
void LgLog::destroy()
{
    const LgOutputLock outputs;
    for (LevelInfo& level : _level) {
        if (level.output == nullptr)
            continue;
        // The stream is closed once: the levels that share it forget it first.
        for (LevelInfo* higher = &level + 1; higher != _level + levelCount; ++higher)
            if (higher->output == level.output) {
                higher->output = nullptr;
                higher->fileName = nullptr;
            }
        const LgInterProcessLockGuard guard(_interprocessLock.get());
        LgFile& file = *fileOf(level);
        constexpr std::string_view banner = "===== Message Logger Stopped =====\n";
        // The count of dropped lines goes before the banner, which is the file's last line.
        file.reportDropped(HwCounter::timeStamp() - _start, 0, isTimeStampsEnabled(), banner.size());
        file.writeLines(banner);
        closeOutput(&level);
    }
    // Names from the environment stay, for displaySetup(); the default paths are about to be freed.
    for (LevelInfo& level : _level)
        if (level.fileName != nullptr && isDefaultPath(level.fileName))
            level.fileName = nullptr;
    setDefaultPaths(nullptr, nullptr);
    LgMajorGroup::finalize();
}

/// A stream that can't be closed is deleted all the same. Clears it in every level that shares it.
void LgLog::closeOutput(LevelInfo* level)
{
    std::ostream* const stream = level->output;
    for (LevelInfo* other = level; other != _level + levelCount; ++other)
        if (other->output == stream)
            other->output = nullptr;
    delete stream;
}

/// Intended: the trailing comma and blanks; the text is part of the interface. Do not mend.
void LgLog::displaySetup()
{
    std::cout << "===== Log Setup =====" << std::endl;
    for (int i = 0; i < levelCount; ++i) {
        LevelInfo const& level = _level[i];
        std::cout << LgTypes::levelToString(LgTypes::Level(i)) << ": ";
        if (!level.enabled)
            std::cout << "Disabled";
        else {
            if (level.echo)
                std::cout << "stdout, ";
            if (level.fileName != nullptr)
                std::cout << level.fileName << ' ';
            if (level.append)
                std::cout << "[Append]";
        }
        std::cout << std::endl;
    }
    std::cout << "===== End Setup =====" << std::endl;
}

/// Relaxed: setLoggerActivation(), called afterwards, stores with release, so a site that finds the logger active finds this
/// function as well.
void LgLog::setQueueFunction(LgQueue* (*function)())
{
    storeRelaxed(_queueFunction, function != nullptr ? function : getSharedQueue);
}

/// This and the next two take no lock. The reader holds the output lock; another caller may see a stream that a stop is about
/// to close.
bool LgLog::isLevelEchoed(LgTypes::Level level)
{
    return isLevel(level) && _level[level].echo;
}

std::ostream* LgLog::getLevelOutput(LgTypes::Level level)
{
    return isLevel(level) ? _level[level].output : nullptr;
}

char const* LgLog::getLevelFileName(LgTypes::Level level)
{
    return isLevel(level) ? _level[level].fileName : nullptr;
}

LgFile* LgLog::getFile(LgTypes::Level level)
{
    return isLevel(level) ? fileOf(_level[level]) : nullptr;
}

/// Relaxed, this and the switches below: a switch stands for itself, and no other memory is read because of it. init() sets
/// them, and then the program at any time; the reader looks at them for each line.
void LgLog::enableTimeStamps()
{
    storeRelaxed(_logTimeStamps, true);
}

void LgLog::disableTimeStamps()
{
    storeRelaxed(_logTimeStamps, false);
}

bool LgLog::isTimeStampsEnabled()
{
    return loadRelaxed(_logTimeStamps);
}

/// Written by init() alone.
std::uint64_t LgLog::getStart()
{
    return _start;
}

void LgLog::setBlockingTrace(bool blocking)
{
    storeRelaxed(_blockingTrace, blocking);
}

bool LgLog::getBlockingTrace()
{
    return loadRelaxed(_blockingTrace);
}

LgInterProcessLock* LgLog::getInterProcessLock()
{
    return _interprocessLock.get();
}

LgRegistry* LgLog::getRegistry()
{
    return _registry.get();
}

/// Fills the new registry before the old one is emptied: if that throws, the old one is as it was.
ObjPtrRet<LgRegistry> LgLog::setRegistry(ObjPtr<LgRegistry> registry)
{
    if (!registry)
        return ObjPtrRet<LgRegistry>();
    if (_registry) {
        const List<LgQueue*> queues = _registry->getQueueList();
        for (LgQueue* queue : queues)
            registry->registerQueue(queue);
        for (LgQueue* queue : queues)
            _registry->deregisterQueue(queue);
    }
    ObjPtrRet<LgRegistry> before(_registry.release());
    _registry = registry;
    return before;
}

}  // namespace Vn
