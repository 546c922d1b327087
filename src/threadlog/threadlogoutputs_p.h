// Private to the sources of this library; partly implemented in threadlogoutputsposix.cpp and threadlogoutputswindows.cpp.
#pragma once

#include <base/lgtypes.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Vn
{

/// The files of the log as the thread layer sees them: names to tell of, and descriptors for a crash.
///
/// Not thread-safe, but for append() and readTail(), which a signal handler may call.
class ThreadLogOutputs
{
public:
    /// Takes over what the logger has opened, and tells of each file that it couldn't open. Each file gets a descriptor of
    /// this object's own: a signal handler can't open one.
    void open();
    void close();

    /// Tells of each file that has begun to refuse lines, once. `error` is the last error behind the writing.
    void tellFailures(int error);

    /// Replaces each file that was moved away by a new one of its name, which begins with the run's banner. False if one can't
    /// be opened, or couldn't be at the start; that is told.
    bool reopen();

    /// Writes to the level's file, all of it unless the system refuses. False if it does. True without a file. Waits a second
    /// for a pipe that nobody reads, and from then on no more for that one; on Windows without end. One thread at a time.
    bool append(LgTypes::Level level, std::string_view text) const;

    /// Copies the last bytes of the level's file to `bytes`, and returns their number.
    std::size_t readTail(LgTypes::Level level, char* bytes, std::size_t size) const;

    /// Writes to standard output, past all buffers. Waits as append() does. One thread at a time.
    static void appendToStandardOutput(std::string_view text);

private:
    static constexpr int levels = LgTypes::Profiling + 1;
    static constexpr std::intptr_t closed = -1;

    struct Output
    {
        std::string path;
        std::ostream* stream = nullptr;  ///< the logger's; null for a level without a file
        bool isLink = false;             ///< the path was a symlink when the logger opened it
        bool isAlone = false;            ///< the user's own file under one name, when we opened it
        bool isRefused = false;          ///< the logger couldn't open it
        bool isTold = false;             ///< that the file refuses lines
        std::intptr_t handle = closed;   ///< our own
        mutable bool isStuck = false;    ///< see appendTo(); of the one thread that may call append()
    };

    Output const* findOutput(LgTypes::Level level) const;
    bool isFirstOfItsFile(Output const& output) const;
    void openOwn(Output& output);

    // Platform side.

    /// Why a file of that path can't be opened for appending.
    static std::string getOpenFailure(std::string const& path);

    /// What the system says of an error; empty for none, where it tells by errno.
    static std::string getErrorText(int error);

    /// Like ThreadLogOutputs::reopen(), for one file that the logger has open. An empty text means success.
    static std::string reopenFile(Output& output, std::string_view banner);

    static bool isSymlink(std::string const& path);
    static bool isAlone(std::intptr_t handle);
    static std::intptr_t openHandle(std::string const& path);
    static void closeHandle(std::intptr_t handle);

    /// Like append(). `isStuck` is set once the handle has made a crash wait in vain, and keeps later calls from waiting.
    static bool appendTo(std::intptr_t handle, std::string_view text, bool& isStuck);
    static std::size_t readTailOf(std::intptr_t handle, char* bytes, std::size_t size);

    Output
        _outputs[levels];  ///< by level; levels of one file have one stream, and the lowest one has the descriptor
};

}  // namespace Vn
