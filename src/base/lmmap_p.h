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
    static constexpr std::size_t longestPath = 149;

    /// An object of the loader, from its first to behind its last byte.
    struct Object
    {
        std::uintptr_t begin;
        std::uintptr_t end;
        std::string path;
    };

    /// Joins the two, in the order of the addresses. Of a stretch of memory that goes beyond an object, as when
    /// another mapping happens to adjoin it, the object's part counts. Lines that don't read as such are passed over.
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
    struct Stretch
    {
        std::uintptr_t begin, end;
        unsigned flags;
    };

    static void addBlock(LmLibrary& library, Object const& object, Stretch const& stretch)
    {
        const std::uintptr_t begin = std::max(object.begin, stretch.begin);
        const std::uintptr_t end = std::min(object.end, stretch.end);
        if (begin < end)
            library.addBlock(LmBlock(begin, end - begin, stretch.flags));
    }

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

    static unsigned flag(bool isSet, LmBlock::Flags value) { return isSet ? static_cast<unsigned>(value) : 0u; }

    /// "begin-end rwxp offset major:minor inode path", the numbers but the inode's in hexadecimal.
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
