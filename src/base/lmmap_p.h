// Private to lmlibrarieslinux.cpp.
#pragma once

#include <base/lmlibrary.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace Vn
{

/// What Linux tells of a process's memory: the objects that its loader knows, and the text of its memory map.
class LmMap
{
public:
    /// Characters of a path, as on Windows, where the call has room for 150 with the terminator.
    static constexpr std::size_t longestPath = 149;

    /// An object of the loader: the program or a library. `end` is behind its last byte; both lie on page boundaries.
    struct Object
    {
        std::uintptr_t begin;
        std::uintptr_t end;
        std::string path;
    };

    /// Widens an object to all pages that a segment of it touches; the size of a page is a power of two.
    ///
    ///     segment 1FF0 of 20 bytes, pages of 1000  ->  1000-3000
    ///     segment 1000 of 1000 bytes               ->  1000-2000
    static void addSegment(Object& object, std::uintptr_t begin, std::uintptr_t size, std::uintptr_t pageSize)
    {
        object.begin = std::min(object.begin, begin / pageSize * pageSize);
        object.end = std::max(object.end, (begin + size + pageSize - 1) / pageSize * pageSize);
    }

    /// Appends a library for each object, with the stretches of the map that overlap it as its blocks.
    ///
    ///     object  1000-4000
    ///     map     0800-2000 r--p   ->  block 1000-2000, read
    ///             2000-3000 r-xp   ->  block 2000-3000, read and execute
    ///             3000-6000 rw-p   ->  block 3000-4000, read and write; copy-on-write too if a file is behind it
    ///
    /// A stretch can go beyond an object: the kernel merges neighbours of equal protection, and what adjoins may be
    /// another mapping. Lines that don't parse are skipped; a later kernel may add some.
    static void addModules(std::vector<Object> objects, std::string const& map, std::vector<LmLibrary>& libraries)
    {
        std::sort(objects.begin(), objects.end(),
                  [](Object const& left, Object const& right) { return left.begin < right.begin; });
        const std::vector<Stretch> stretches = read(map);
        for (Object const& object : objects) {
            libraries.emplace_back(object.begin);
            libraries.back().setPath(object.path.substr(0, longestPath).c_str());
            for (Stretch const& stretch : stretches)
                addBlock(libraries.back(), object, stretch);
        }
    }

private:
    /// One line of the map: pages with the same protection.
    struct Stretch
    {
        std::uintptr_t begin, end;
        unsigned flags;
    };

    /// Adds the part of the stretch that lies in the object, if there is one.
    static void addBlock(LmLibrary& library, Object const& object, Stretch const& stretch)
    {
        const std::uintptr_t begin = std::max(object.begin, stretch.begin);
        const std::uintptr_t end = std::min(object.end, stretch.end);
        // Empty for a stretch beside the object.
        if (begin < end)
            library.addBlock(LmBlock(begin, end - begin, stretch.flags));
    }

    /// The lines of the map; the last one may lack its line end.
    static std::vector<Stretch> read(std::string const& map)
    {
        std::vector<Stretch> stretches;
        for (std::size_t start = 0; start < map.size();) {
            const std::size_t end = std::min(map.find('\n', start), map.size());
            readLine(map.substr(start, end - start), stretches);
            start = end + 1;
        }
        return stretches;
    }

    /// `value` or 0, as a number that can be added up.
    static unsigned flag(bool isSet, LmBlock::Flags value) { return isSet ? static_cast<unsigned>(value) : 0u; }

    /// "begin-end rwxp offset major:minor inode path"; all numbers but the inode are hexadecimal, and the path may be
    /// missing. A private (`p`), writable mapping of a file (inode not 0) is copied at the first write.
    static void readLine(std::string const& line, std::vector<Stretch>& stretches)
    {
        std::uint64_t begin, end, inode;
        char access[5];
        if (std::sscanf(line.c_str(), "%" SCNx64 "-%" SCNx64 " %4s %*x %*x:%*x %" SCNu64, &begin, &end, access,
                        &inode) != 4 ||
            std::char_traits<char>::length(access) != 4)
            return;
        const bool isWritable = access[1] == 'w';
        const unsigned flags = flag(access[0] == 'r', LmBlock::Read) | flag(isWritable, LmBlock::Write) |
                               flag(access[2] == 'x', LmBlock::Execute) |
                               flag(isWritable && access[3] == 'p' && inode != 0, LmBlock::CopyOnWrite);
        stretches.push_back({static_cast<std::uintptr_t>(begin), static_cast<std::uintptr_t>(end), flags});
    }
};

}  // namespace Vn
