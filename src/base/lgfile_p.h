// Private to lgfile.cpp, lglog.cpp and lgreader.cpp; implemented in lgfileposix.cpp and lgfilewindows.cpp.
#pragma once

#include <base/osfile_p.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace Vn
{

/// The file of one or more levels: a stream like any other, which also takes whole lines.
///
/// What the system refuses waits in 64 KiB and is tried again with each line and each flush. What doesn't fit there is
/// dropped and counted. A child process doesn't inherit the file. One thread at a time.
class LgFile : public std::ostream
{
public:
    /// How a file's name came about.
    enum class Origin
    {
        Default,  ///< a name in the log directory, where anybody may have put something: opened only if it is our own file
        Named  ///< the user's own words: a link, a device and a pipe will do
    };

    /// Opens the file and leaves its content alone; never waits. If it can't be opened, the stream has failed and stays so.
    /// With `isShared` all that write the file hold a lock meanwhile, and the caller does so, too.
    LgFile(char const* path, Origin origin, bool isShared);

    /// Closes the file. A file that isn't shared gets what still waits, as far as the system takes it.
    ~LgFile() override;

    /// Empties the file. A failure fails the stream for good, as if it couldn't be opened.
    void beginAnew();

    /// What tells the file from all others; nothing if it isn't open.
    std::optional<System::FileIdentity> getIdentity() const;

    /// Writes whole lines in one system call, and flushes. In a shared file they begin at the start of a line, whatever a
    /// killed writer has left, and a line of which the system takes a part only is taken back.
    /// `messages` is how many the text stands for, which are counted if it is dropped.
    void writeLines(std::string_view text, std::int32_t messages = 1);

    /// Writes how many messages were dropped, if any were and there is room for that and for a line of `nextSize` behind it. The
    /// line is that of a full queue: "Event overflow [12]".
    void reportDropped(std::uint64_t ticks, unsigned long threadId, bool hasPrefix, std::size_t nextSize);

private:
    class Buffer;

    bool isOpen() const;
    void tryAgain();

    std::unique_ptr<Buffer> _buffer;
};

namespace System
{

/// An open log file as the system sees it.
class LogOutput
{
public:
    LogOutput() = default;
    ~LogOutput();
    LogOutput(LogOutput const&) = delete;
    LogOutput& operator=(LogOutput const&) = delete;

    /// Never waits, and never gives one of the standard descriptors.
    bool open(char const* path, LgFile::Origin origin);

    bool isOpen() const { return _handle != closed; }

    FileIdentity const& getIdentity() const { return _identity; }

    /// True for a pipe and a device, which hold nothing.
    bool makeEmpty();

    /// Bytes; nothing if the system doesn't tell.
    std::optional<std::uint64_t> getSize() const;

    /// Whether the byte before `size` is the end of a line; true as well if it can't be read.
    bool endsLineAt(std::uint64_t size) const;

    /// Appends, and returns how much of the text was written before the system refused.
    std::size_t append(std::string_view text);

    /// Shortens the file by `size` characters, of which none is a line end. False if the system refuses, and if the file is
    /// shorter than that.
    bool removeFromEnd(std::size_t size);

private:
    static constexpr std::intptr_t closed = -1;

    std::intptr_t _handle = closed;
    bool _isRegular = false;
    FileIdentity _identity;
    std::string _fileText;  ///< a text with the line ends of the file, where they differ from ours
};

/// Where the next byte of standard output goes; nothing unless that is a file.
std::optional<std::uint64_t> getStandardOutputEnd();

/// Whether the byte before `end`, which is above 0, ends a line; nothing if it can't be read.
std::optional<bool> isLineEndOfStandardOutput(std::uint64_t end);

}  // namespace System

}  // namespace Vn
