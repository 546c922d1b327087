// lginterprocesslockposix.cpp (Windows form: lginterprocesslockwindows.cpp)
//
// Other processes are kept out by the system's lock on a file, which ends with its holder whatever becomes of that. It
// belongs to the opened file, so a process opens each file once, and a mutex beside it keeps its own threads apart.
//
// A file is removed when it is closed, and at the end of the process, unless another process holds its lock at that moment.
// Only the holder of a file's lock removes the file. So a process that gets the lock checks that the path still leads to the
// file that it has opened, and opens the new one if it doesn't; two processes can't hold two files of one name.
//
// A thread that ends releases what it holds. The system calls us for that through a thread-specific key: a thread_local object
// would do as well, but ends the process if there is no memory when a thread first uses it.
//
// lock() takes the mutex first and the file's lock behind it; unlock() goes the other way. In a child of `fork` nothing is
// held: the descriptors are closed, since the parent's lock belongs to the opened file that both share, and mutexes and holders
// are made anew.
#include <base/lginterprocesslock.h>

#include <base/exsyserror.h>
#include <base/lginterprocesslockname_p.h>
#include <base/osposix_p.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <set>
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

/// For calls that return their error, and for errors of our own.
[[noreturn]] void throwError(int error, int line)
{
    errno = error;
    throw ExSysErrorWindows(sourceName, line);
}

class LockFile;

/// The lock files that a thread holds.
using HeldFiles = std::vector<std::shared_ptr<LockFile>>;

/// The calling thread's list: null if it has held none, or made if it hasn't.
HeldFiles* findHeldFiles();
HeldFiles& getHeldFiles();

/// One opened file, for all locks of its name in this process. Without a path it excludes only threads.
class LockFile : public std::enable_shared_from_this<LockFile>
{
public:
    explicit LockFile(std::string path) : _path(std::move(path)) {}
    ~LockFile()
    {
        removeFile();
        closeFile();
    }

    LockFile(LockFile const&) = delete;
    LockFile& operator=(LockFile const&) = delete;

    /// Throws ExSysErrorWindows if the file can't be opened or isn't one of ours.
    void openFile();

    /// The calling thread takes the lock, once more if it holds it, and releases it as often.
    void lock();
    void unlock();

    void releaseAtThreadEnd();
    void resetInChild();
    void removeUnlessHeld();

    /// From now on each holder removes its file before it unlocks it: the process ends, and nobody comes after it.
    static void removeAtUnlock() { _isProcessEnding.store(true, std::memory_order_relaxed); }

private:
    /// Whether the calling thread is the holder.
    bool isMine() const { return _holder.load(std::memory_order_relaxed) == std::this_thread::get_id(); }
    bool unlockFile();
    void releaseMutex();
    void closeFile();
    void removeFile();
    void unlinkFile() const;
    void lockFile();
    bool isFileInPlace() const;

    std::string _path;
    int _descriptor = -1;
    ::dev_t _device = 0;  ///< these two are the opened file's
    ::ino_t _inode = 0;
    std::mutex _mutex;

    // Relaxed: only the holder finds itself here, and nobody else can put it there.
    std::atomic<std::thread::id> _holder = std::thread::id();
    int _depth = 0;

    // Relaxed: a thread that doesn't see it yet leaves an empty file behind, at worst.
    static inline constinit std::atomic<bool> _isProcessEnding = false;
};

/// Enter a thread's list into OpenFiles::held, and take it out. Entering throws `std::bad_alloc`.
void addHeldFiles(HeldFiles const* files);
void removeHeldFiles(HeldFiles const* files);

/// Called by the system at the end of a thread that has held a lock.
void releaseHeldFiles(void* files)
{
    const std::unique_ptr<HeldFiles> held(static_cast<HeldFiles*>(files));
    removeHeldFiles(held.get());
    for (std::shared_ptr<LockFile> const& file : *held)
        file->releaseAtThreadEnd();
}

/// The system's key to what each thread holds. It goes when the process ends or the library is unloaded, since the system
/// would call code that isn't there; a thread that takes a lock even later makes another one.
///
/// No mutex: a thread may hold it when another one forks.
class HeldFilesKey
{
public:
    /// The key, made by the first call. Throws ExSysErrorWindows if the system has none left.
    static ::pthread_key_t get()
    {
        std::int64_t key = _key.load(std::memory_order_relaxed);
        if (key != none)
            return static_cast<::pthread_key_t>(key);
        ::pthread_key_t made;
        if (const int error = ::pthread_key_create(&made, releaseHeldFiles))
            throwError(error, __LINE__);
        // Relaxed: the key is all there is to publish.
        if (_key.compare_exchange_strong(key, made, std::memory_order_relaxed))
            return made;
        ::pthread_key_delete(made);
        return static_cast<::pthread_key_t>(key);  // another thread was faster
    }

    /// Ends the calls at the end of threads. Doesn't wait for threads that use the key at this moment.
    static void remove()
    {
        const std::int64_t key = _key.exchange(none, std::memory_order_relaxed);
        if (key != none)
            ::pthread_key_delete(static_cast<::pthread_key_t>(key));
    }

    /// Null if the calling thread has held none.
    static HeldFiles* find()
    {
        const std::int64_t key = _key.load(std::memory_order_relaxed);
        return key != none ? static_cast<HeldFiles*>(::pthread_getspecific(static_cast<::pthread_key_t>(key)))
                           : nullptr;
    }

private:
    static constexpr std::int64_t none = -1;

    static inline constinit std::atomic<std::int64_t> _key = none;
};

HeldFiles* findHeldFiles()
{
    return HeldFilesKey::find();
}

/// Works as well in a destructor of a thread that ends: the system then calls releaseHeldFiles() once more.
HeldFiles& getHeldFiles()
{
    if (HeldFiles* const files = findHeldFiles())
        return *files;
    auto files = std::make_unique<HeldFiles>();
    addHeldFiles(files.get());
    if (const int error = ::pthread_setspecific(HeldFilesKey::get(), files.get())) {
        removeHeldFiles(files.get());
        throwError(error, __LINE__);
    }
    return *files.release();
}

/// False, with errno set, if the system refuses. The file is closed then, which releases its lock as well.
bool LockFile::unlockFile()
{
    if (_descriptor == -1)
        return true;
    while (::flock(_descriptor, LOCK_UN) != 0)
        if (errno != EINTR) {
            const int error = errno;
            closeFile();
            errno = error;
            return false;
        }
    return true;
}

/// Removes the file unless a process holds its lock. A process that waits for the lock finds the file gone when it gets it, and
/// makes a new one.
void LockFile::removeFile()
{
    if (_descriptor == -1 || ::flock(_descriptor, LOCK_EX | LOCK_NB) != 0)
        return;
    unlinkFile();
    unlockFile();
}

/// For the holder of the file's lock.
void LockFile::unlinkFile() const
{
    if (_descriptor != -1 && isFileInPlace())
        ::unlink(_path.c_str());
}

/// At the end of the process. Doesn't wait: a thread of ours that holds the lock may have stopped for good.
void LockFile::removeUnlessHeld()
{
    const std::unique_lock guard(_mutex, std::try_to_lock);
    if (guard.owns_lock())
        removeFile();
}

void LockFile::closeFile()
{
    if (_descriptor != -1)
        ::close(std::exchange(_descriptor, -1));
}

/// Follows no symlink and refuses another user's file: its owner could hold the lock for ever. A file with several hard links
/// may be one that the user needs for something else.
void LockFile::openFile()
{
    if (_path.empty())
        return;
    Posix::Descriptor file(Posix::openFile(_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0600));
    struct ::stat status = {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        throw ExSysErrorWindows(sourceName, __LINE__);
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid() || status.st_nlink > 1)
        throwError(EPERM, __LINE__);  // and not kept: what is kept is removed in the end
    _descriptor = file.release();
    _device = status.st_dev;
    _inode = status.st_ino;
}

/// Whether the path still leads to the opened file: another process, or a cleaner of the folder, may have removed it.
bool LockFile::isFileInPlace() const
{
    struct ::stat found = {};
    return ::lstat(_path.c_str(), &found) == 0 && found.st_dev == _device && found.st_ino == _inode;
}

/// Repeats until the file that it has locked is the one at the path; see the overview.
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

/// Blocks without a time limit. The list of the thread grows before the file is locked, so that a lack of memory leaves nothing
/// locked.
void LockFile::lock()
{
    if (isMine()) {
        ++_depth;
        return;
    }
    std::unique_lock guard(_mutex);
    HeldFiles& held = getHeldFiles();
    held.push_back(shared_from_this());
    try {
        lockFile();
    } catch (...) {
        held.pop_back();
        closeFile();
        throw;
    }
    guard.release();
    _holder.store(std::this_thread::get_id(), std::memory_order_relaxed);
    _depth = 1;
}

/// A file that can't be unlocked is closed, so the lock is released in any case; the failure is thrown behind that.
void LockFile::unlock()
{
    if (!isMine())
        throwError(EPERM, __LINE__);
    if (_depth > 1) {
        --_depth;
        return;
    }
    if (_isProcessEnding.load(std::memory_order_relaxed))
        unlinkFile();
    const bool isUnlocked = unlockFile();
    const int error = errno;
    if (HeldFiles* const held = findHeldFiles())  // gone with its key if the library is about to be unloaded
        std::erase(*held, shared_from_this());
    releaseMutex();
    if (!isUnlocked)
        throwError(error, __LINE__);
}

/// What unlock() does, for a thread that ends.
void LockFile::releaseAtThreadEnd()
{
    if (!isMine())
        return;
    unlockFile();
    releaseMutex();
}

/// The holder is cleared first: behind unlock() it is another thread's to write.
void LockFile::releaseMutex()
{
    _depth = 0;
    _holder.store(std::thread::id(), std::memory_order_relaxed);
    _mutex.unlock();
}

/// In a child of `fork`: the opened file is the parent's too, and the mutex may be locked by a thread that isn't here.
void LockFile::resetInChild()
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

    /// The lists of all threads. Without them a list would be lost, and count as a leak, when the key goes while its thread
    /// still runs.
    std::set<HeldFiles const*> held;
};

OpenFiles& getOpenFiles()
{
    static OpenFiles& files = *new OpenFiles;
    return files;
}

void addHeldFiles(HeldFiles const* files)
{
    OpenFiles& open = getOpenFiles();
    const std::lock_guard guard(open.mutex);
    open.held.insert(files);
}

void removeHeldFiles(HeldFiles const* files)
{
    OpenFiles& open = getOpenFiles();
    const std::lock_guard guard(open.mutex);
    open.held.erase(files);
}

/// Held across the fork, so that the child's copy of the map isn't half changed.
void prepareFork()
{
    getOpenFiles().mutex.lock();
}

/// In the parent.
void finishFork()
{
    getOpenFiles().mutex.unlock();
}

/// The child's only thread is the one that forked.
void startChild()
{
    for (auto const& [path, entry] : getOpenFiles().files)
        if (std::shared_ptr<LockFile> const file = entry.lock())
            file->resetInChild();
    // After that: this may destroy a LockFile, whose destructor would remove the parent's file if it were still open.
    if (HeldFiles* const held = findHeldFiles())
        held->clear();
    getOpenFiles().mutex.unlock();
}

/// Removes the files when the process ends, which locks that are never destroyed, as the logger's, would leave behind. A lock
/// that is used even later makes its file again, and removes it with its unlock().
struct RemovalAtExit
{
    ~RemovalAtExit()
    {
        LockFile::removeAtUnlock();
        HeldFilesKey::remove();
        OpenFiles& open = getOpenFiles();
        const std::unique_lock guard(open.mutex, std::try_to_lock);  // a thread may have stopped within it
        if (!guard.owns_lock())
            return;
        for (auto const& [path, entry] : open.files)
            if (std::shared_ptr<LockFile> const file = entry.lock())
                file->removeUnlessHeld();
    }
};

/// The file behind a name, opened by the first lock of the name. What later locks and forks need is made before anything is
/// opened.
std::shared_ptr<LockFile> getLockFile(char const* name)
{
    static const int forkFailure = ::pthread_atfork(prepareFork, finishFork, startChild);
    if (forkFailure != 0)
        throwError(forkFailure, __LINE__);
    HeldFilesKey::get();
    static const RemovalAtExit removalAtExit;
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

/// A lock is no more than a share in the file of its name.
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

/// All locks of one name share one opened file; see the overview.
LgInterProcessLock* LgInterProcessLock::create(char const* name)
{
    return new LockPosix(getLockFile(name));
}

}  // namespace Vn
