// lginterprocesslockposix.cpp (Windows form: lginterprocesslockwindows.cpp)
//
// Other processes are kept out by the system's lock on a file, which ends with its holder whatever becomes of that. It
// belongs to the opened file, so a process opens each file once, and a mutex beside it keeps its own threads apart.
#include <base/lginterprocesslock.h>

#include <base/exsyserror.h>
#include <base/lginterprocesslockname_p.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/lginterprocesslock";

// Not the folder for temporary files: two processes may have different ones.
constexpr char folder[] = "/tmp/";

[[noreturn]] void refuse(int error, int line)
{
    errno = error;
    throw ExSysErrorWindows(sourceName, line);
}

class LockFile;

/// The lock files that this thread holds; it gives them up when it ends.
struct HeldFiles
{
    ~HeldFiles();

    std::vector<std::shared_ptr<LockFile>> files;
};

thread_local HeldFiles heldFiles;
thread_local bool isThreadEnding = false;  ///< the list above is gone

/// One opened file, for all locks of its name in this process. Without a path it keeps only threads apart.
class LockFile : public std::enable_shared_from_this<LockFile>
{
public:
    explicit LockFile(std::string path) : _path(std::move(path)) {}
    ~LockFile() { closeFile(); }

    LockFile(LockFile const&) = delete;
    LockFile& operator=(LockFile const&) = delete;

    void openFile();
    void lock();
    void unlock();
    void giveUp();
    void startAfresh();

private:
    bool isMine() const { return _holder.load(std::memory_order_relaxed) == std::this_thread::get_id(); }
    bool unlockFile() { return _descriptor == -1 || ::flock(_descriptor, LOCK_UN) == 0; }
    void letThreadsIn();
    void closeFile();
    void lockFile();
    bool isFileInPlace() const;

    std::string _path;
    int _descriptor = -1;
    std::mutex _mutex;

    // Relaxed: only the holder finds itself here, and nobody else can put it there.
    std::atomic<std::thread::id> _holder = std::thread::id();
    int _depth = 0;
};

HeldFiles::~HeldFiles()
{
    isThreadEnding = true;
    for (std::shared_ptr<LockFile> const& file : files)
        file->giveUp();
}

void LockFile::closeFile()
{
    if (_descriptor != -1)
        ::close(std::exchange(_descriptor, -1));
}

/// Follows no link, and takes no file of somebody else's, who could read along, or hold it for ever.
void LockFile::openFile()
{
    if (_path.empty())
        return;
    int descriptor = -1;
    do
        descriptor = ::open(_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
    while (descriptor == -1 && errno == EINTR);
    if (descriptor == -1)
        throw ExSysErrorWindows(sourceName, __LINE__);
    _descriptor = descriptor;
    struct ::stat status = {};
    if (::fstat(descriptor, &status) != 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid() || status.st_nlink > 1)
        refuse(EPERM, __LINE__);
}

/// Whether the path still leads to the opened file: who cleans the folder up may have removed it.
bool LockFile::isFileInPlace() const
{
    struct ::stat opened = {};
    struct ::stat found = {};
    return ::fstat(_descriptor, &opened) == 0 && ::lstat(_path.c_str(), &found) == 0 &&
           opened.st_dev == found.st_dev && opened.st_ino == found.st_ino;
}

void LockFile::lockFile()
{
    while (!_path.empty()) {
        if (_descriptor == -1)
            openFile();
        while (::flock(_descriptor, LOCK_EX) != 0)
            if (errno != EINTR)
                throw ExSysErrorWindows(sourceName, __LINE__);
        if (isFileInPlace())
            return;
        closeFile();
    }
}

void LockFile::lock()
{
    if (isMine()) {
        ++_depth;
        return;
    }
    std::unique_lock guard(_mutex);
    if (!isThreadEnding)
        heldFiles.files.push_back(shared_from_this());
    try {
        lockFile();
    } catch (...) {
        if (!isThreadEnding)
            heldFiles.files.pop_back();
        closeFile();
        throw;
    }
    guard.release();
    _holder.store(std::this_thread::get_id(), std::memory_order_relaxed);
    _depth = 1;
}

void LockFile::unlock()
{
    if (!isMine())
        refuse(EPERM, __LINE__);
    if (_depth > 1) {
        --_depth;
        return;
    }
    if (!unlockFile())
        throw ExSysErrorWindows(sourceName, __LINE__);
    if (!isThreadEnding)
        std::erase(heldFiles.files, shared_from_this());
    letThreadsIn();
}

/// What unlock() does, for a thread that ends: the file is closed where it can't be unlocked.
void LockFile::giveUp()
{
    if (!isMine())
        return;
    if (!unlockFile())
        closeFile();
    letThreadsIn();
}

void LockFile::letThreadsIn()
{
    _depth = 0;
    _holder.store(std::thread::id(), std::memory_order_relaxed);
    _mutex.unlock();
}

/// In a child of `fork`: the opened file is the parent's too, and the mutex may be locked by a thread that isn't here.
void LockFile::startAfresh()
{
    closeFile();
    ::new (static_cast<void*>(&_mutex)) std::mutex;
    _holder.store(std::thread::id(), std::memory_order_relaxed);
    _depth = 0;
}

/// The open files of this process, by path. They and their mutex are never destroyed: locks may be static objects.
struct OpenFiles
{
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<LockFile>> files;
};

OpenFiles& getOpenFiles()
{
    static OpenFiles& files = *new OpenFiles;
    return files;
}

void prepareFork()
{
    getOpenFiles().mutex.lock();
}

void continueAfterFork()
{
    getOpenFiles().mutex.unlock();
}

void startChild()
{
    heldFiles.files.clear();
    for (auto const& [path, entry] : getOpenFiles().files)
        if (std::shared_ptr<LockFile> const file = entry.lock())
            file->startAfresh();
    getOpenFiles().mutex.unlock();
}

std::shared_ptr<LockFile> getLockFile(char const* name)
{
    static const int isWatchingForks = ::pthread_atfork(prepareFork, continueAfterFork, startChild);
    if (isWatchingForks != 0)
        refuse(isWatchingForks, __LINE__);
    // A lock without a name has an entry as well, so that forks find it; its key is no file's.
    static std::atomic<unsigned> unnamed = 0;
    const std::string path =
        name != nullptr ? folder + ("vnbase-" + std::to_string(::geteuid()) + "-lock-") + getLockFileName(name)
                        : "";
    const std::string key = name != nullptr ? path : std::to_string(unnamed++);

    OpenFiles& open = getOpenFiles();
    const std::lock_guard guard(open.mutex);
    std::erase_if(open.files, [](auto const& entry) { return entry.second.expired(); });
    std::weak_ptr<LockFile>& entry = open.files[key];
    std::shared_ptr<LockFile> file = entry.lock();
    if (file == nullptr) {
        file = std::make_shared<LockFile>(path);
        file->openFile();
        entry = file;
    }
    return file;
}

class LockPosix : public LgInterProcessLock
{
public:
    explicit LockPosix(std::shared_ptr<LockFile> file) : _handle(std::move(file)) {}

    void lock() override { _handle->lock(); }
    void unlock() override { _handle->unlock(); }

private:
    std::shared_ptr<LockFile> _handle;
};
}  // namespace

LgInterProcessLock* LgInterProcessLock::create(char const* name)
{
    return new LockPosix(getLockFile(name));
}

}  // namespace Vn
