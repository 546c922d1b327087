#pragma once

#include <cstddef>
#include <memory>
#include <ostream>

namespace Vn
{

/// A log file: a stream like any other, which also takes a whole line in one system call. A child process doesn't inherit
/// it. Private to the library.
class LgFile : public std::ostream
{
public:
    /// Empties the file, or goes on at its end. If it can't be opened, the stream has failed and stays so.
    LgFile(char const* path, bool isAppended);

    /// Writes what is in the buffer and closes the file.
    ~LgFile() override;

    /// Writes and flushes. After a failure, as when the disk is full, the file is tried again with each line, and lines that
    /// fit the buffer wait there.
    void writeLine(char const* text, std::size_t size);

private:
    class Buffer;

    std::unique_ptr<Buffer> _buffer;
};

}  // namespace Vn
