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

#include <algorithm>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>

namespace Vn
{
namespace
{
constexpr int levelCount = 7;

char* profilePath = nullptr;
char* eventsPath = nullptr;

LgQueue* getSharedQueue()
{
    static LgQueue& queue = *new LgQueue(0);
    return &queue;
}

bool isLevel(LgTypes::Level level)
{
    return level >= 0 && level < levelCount;
}

// Relaxed: a switch stands for itself, nothing else is read on its account.
void flip(bool& flag, bool value)
{
    std::atomic_ref(flag).store(value, std::memory_order_relaxed);
}

bool look(bool& flag)
{
    return std::atomic_ref(flag).load(std::memory_order_relaxed);
}

void setDefaultPaths(char* profile, char* events)
{
    delete[] profilePath;
    delete[] eventsPath;
    profilePath = profile;
    eventsPath = events;
}

/// Where the default files go; makes the directory. False if that can't be made.
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

std::string makeStartBanner(bool hasTime)
{
    std::ostringstream text;
    text << "===== Message Logger Startup =====\n";
    if (!hasTime)
        return text.str();
    const std::time_t now = std::time(nullptr);
    text << "===== Started on " << std::ctime(&now) << '\n';  // the date brings a line end of its own
    text << "===== Clock Frequency: " << std::fixed << std::setprecision(9) << HwCounter::resolution() << '\n';
    return text.str();
}

/// In one piece, so that all of it waits where the disk is full.
void writeStartBanner(LgFile& file, bool hasTime)
{
    file.writeLines(makeStartBanner(hasTime));
    if (hasTime)
        file << std::fixed;  // part of the interface: whoever writes numbers to the stream relies on it
}

/// No level has another kind of stream.
LgFile& getFile(LgLog::LevelInfo const& level)
{
    return static_cast<LgFile&>(*level.output);
}

bool isDefaultPath(char const* path)
{
    return path == eventsPath || path == profilePath;
}
}  // namespace

LgLog::LevelInfo LgLog::_level[levelCount] = {};
std::atomic<bool> LgLog::_loggerActive = false;
bool LgLog::_blockingTrace = false;
bool LgLog::_logTimeStamps = true;
std::uint64_t LgLog::_start = 0;
LgQueue* (*LgLog::_queueFunction)() = getSharedQueue;
// A reader may be at work while static objects are destroyed.
VN_NEVER_DESTROYED_MEMBER(ObjPtr<LgRegistry>, registryStorage, "_ZN2Vn5LgLog9_registryE");
VN_NEVER_DESTROYED_MEMBER(ObjPtr<LgInterProcessLock>, interprocessLockStorage, "_ZN2Vn5LgLog17_interprocessLockE");

void LgLog::init()
{
    const LgOutputLock outputs;
    _registry.reset(new LgSimpleRegistry);
    for (LevelInfo& level : _level) {  // what an earlier init() has left, paths that are about to be freed included
        closeOutput(&level);
        level = {};
    }
    readOutputs(makeDefaultPaths());
    readSettings();
    _start = HwCounter::timeStamp();
    for (LevelInfo& level : _level)
        openOutput(&level);
}

void LgLog::readOutputs(bool hasDirectory)
{
    static constexpr char const* variables[levelCount] = {
        "VN_LOG_INTERNAL_ERROR", "VN_LOG_FATAL_ERROR", "VN_LOG_RECOVERABLE_ERROR", "VN_LOG_WARNING",
        "VN_LOG_INFORMATIONAL",  "VN_LOG_TRACING",     "VN_LOG_PROFILING"};
    // In the order that is part of the interface: profiling before tracing.
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

LgLog::LevelInfo LgLog::parseEnvVar(char const* value)
{
    if (value == nullptr)
        return {true, false, false, nullptr, eventsPath};
    if (std::strncmp(value, "--", 2) == 0)
        return {false, false, false, nullptr, nullptr};
    const auto orNull = [](char const* name) { return *name != '\0' ? name : nullptr; };
    if (value[0] == '%' && value[1] == '+')
        return {true, true, true, nullptr, value + 2};
    if (value[0] == '%')
        return {true, true, false, nullptr, orNull(value + 1)};
    if (value[0] == '+')
        return {true, false, true, nullptr, orNull(value + (value[1] == '+' ? 2 : 1))};
    return {true, false, false, nullptr, value};
}

/// Levels that name one file, be it by two names, share its stream.
void LgLog::openOutput(LevelInfo* level)
{
    if (level->fileName == nullptr)
        return;
    for (LevelInfo const* lower = _level; lower != level; ++lower)
        if (lower->fileName != nullptr && std::strcmp(lower->fileName, level->fileName) == 0) {
            level->output = lower->output;
            return;
        }
    const LgFile::Origin origin = isDefaultPath(level->fileName) ? LgFile::Origin::Default : LgFile::Origin::Named;
    ObjPtr<LgFile> file(new LgFile(level->fileName, origin, _interprocessLock.get() != nullptr));
    for (LevelInfo const* lower = _level; lower != level; ++lower)
        if (lower->output != nullptr && file->getIdentity() &&
            getFile(*lower).getIdentity() == file->getIdentity()) {
            level->output = lower->output;
            return;
        }
    LgFile& opened = *file;
    level->output = file.release();
    const LgInterProcessLockGuard guard(_interprocessLock.get());
    if (!level->append)
        opened.beginAnew();
    writeStartBanner(opened, isTimeStampsEnabled());
}

void LgLog::destroy()
{
    const LgOutputLock outputs;
    for (LevelInfo& level : _level) {
        if (level.output == nullptr)
            continue;
        for (LevelInfo* higher = &level + 1; higher != _level + levelCount; ++higher)
            if (higher->output == level.output)
                higher->output = nullptr, higher->fileName = nullptr;
        const LgInterProcessLockGuard guard(_interprocessLock.get());
        LgFile& file = getFile(level);
        constexpr std::string_view banner = "===== Message Logger Stopped =====\n";
        file.tellDropped(HwCounter::timeStamp() - _start, 0, isTimeStampsEnabled(), banner.size());
        file.writeLines(banner);
        closeOutput(&level);
    }
    for (LevelInfo& level : _level)
        if (level.fileName != nullptr && isDefaultPath(level.fileName))
            level.fileName = nullptr;
    setDefaultPaths(nullptr, nullptr);
    LgMajorGroup::finalize();
}

/// A stream that can't be closed is left failed, as its own close() leaves it, and goes all the same.
void LgLog::closeOutput(LevelInfo* level)
{
    std::ostream* const stream = level->output;
    for (LevelInfo* other = level; other != _level + levelCount; ++other)
        if (other->output == stream)
            other->output = nullptr;
    delete stream;
}

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

void LgLog::setQueueFunction(LgQueue* (*function)())
{
    std::atomic_ref(_queueFunction)
        .store(function != nullptr ? function : getSharedQueue, std::memory_order_relaxed);
}

bool LgLog::isLevelEchoed(LgTypes::Level level)
{
    return isLevel(level) && _level[level].echo;
}

std::ostream* LgLog::getLevelOutput(LgTypes::Level level)
{
    return isLevel(level) ? _level[level].output : nullptr;
}

void LgLog::enableTimeStamps()
{
    flip(_logTimeStamps, true);
}

void LgLog::disableTimeStamps()
{
    flip(_logTimeStamps, false);
}

bool LgLog::isTimeStampsEnabled()
{
    return look(_logTimeStamps);
}

std::uint64_t LgLog::getStart()
{
    return _start;
}

void LgLog::setBlockingTrace(bool blocking)
{
    flip(_blockingTrace, blocking);
}

bool LgLog::getBlockingTrace()
{
    return look(_blockingTrace);
}

LgInterProcessLock* LgLog::getInterProcessLock()
{
    return _interprocessLock.get();
}

LgRegistry* LgLog::getRegistry()
{
    return _registry.get();
}

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
