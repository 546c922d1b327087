// Private to osfile.cpp and ostreecopy.cpp.
#pragma once

#include <base/osfilereader.h>
#include <base/osfilewriter.h>

#include <cstdint>

namespace Vn
{

/// Knows the handles of the two ends of a copy, for what neither end can do alone.
class FileCopy
{
public:
    /// Ends of a copy for files that are yet to be opened, in whichever way.
    static OsFileReader closedReader() { return OsFileReader(); }
    static OsFileWriter closedWriter() { return OsFileWriter(); }

    /// Gives a file to its end. Throws ExSysErrorWindows, with the system's error, for closedHandle, as if the end had
    /// opened it.
    template <class End>
    static void give(End& end, std::int64_t handle)
    {
        end.adopt(handle);
    }

    /// Both are at the start of their files, and the writer's is empty.
    ///
    ///     up to one block             read, write, read (which finds the end)
    ///     more, blocks are shared     read, share, read
    ///     more, otherwise             read, write, copied by the system, read
    ///     the system copies nothing   read, write, read, write, ..., read
    ///
    /// The end is always what a reading finds, so a file that grows meanwhile is copied with what has been appended,
    /// and one that shrinks up to its new end.
    static void run(OsFileReader& reader, OsFileWriter& writer);
};

}  // namespace Vn
