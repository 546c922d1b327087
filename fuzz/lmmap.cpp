// Memory maps of any text, cut by objects of any place: each object becomes one library, its blocks are parts of it, and a line
// that is as the kernel writes it is read as it stands, whatever comes before it.
#include <base/lmmap_p.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{
void check(bool condition)
{
    if (!condition)
        std::abort();
}

constexpr std::uintptr_t page = 0x1000;
}  // namespace

/// Two bytes for each object, its first page and its pages, up to one of no pages; then the map.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::vector<Vn::LmMap::Object> objects;
    std::size_t at = 0;
    for (; at + 1 < size && data[at + 1] != 0 && objects.size() < 8; at += 2)
        objects.push_back(
            {data[at] * page, (data[at] + std::uintptr_t(data[at + 1])) * page, std::string(data[at + 1], 'p')});
    at = at + 2 < size ? at + 2 : size;
    const std::string map(reinterpret_cast<char const*>(data) + at, size - at);
    std::vector<Vn::LmLibrary> libraries;
    Vn::LmMap::addModules(objects, map, libraries);
    check(libraries.size() == objects.size());
    std::uintptr_t last = 0;
    for (Vn::LmLibrary const& library : libraries) {
        check(library.getBaseAddress() >= last);
        last = library.getBaseAddress();
        check(std::strlen(library.getPath()) <= Vn::LmMap::longestPath);
        bool isAnObject = false;
        for (Vn::LmMap::Object const& object : objects) {
            bool holds = object.begin == last;
            for (Vn::LmBlock const& block : library.getBlocks())
                holds = holds && block.getSize() != 0 && block.getAddress() >= object.begin &&
                        block.getAddress() + block.getSize() <= object.end;
            isAnObject = isAnObject || holds;
        }
        check(isAnObject);
        for (Vn::LmBlock const& block : library.getBlocks())
            check((block.getFlags() & ~unsigned(Vn::LmBlock::Read | Vn::LmBlock::Write | Vn::LmBlock::Execute |
                                                Vn::LmBlock::CopyOnWrite)) == 0);
    }

    // The same map and one line more, for an object that nothing else can overlap.
    const std::uintptr_t begin = UINTPTR_MAX - 8 * page + 1;
    char line[128];
    std::snprintf(line, sizeof line, "\n%zx-%zx rw-p 00000000 fd:00 17 /lib/x\n", begin + page, begin + 2 * page);
    std::vector<Vn::LmLibrary> single;
    Vn::LmMap::addModules({{begin, begin + 4 * page, "x"}}, map + line, single);
    check(single.size() == 1 && single[0].getBlocks().size() >= 1);
    Vn::LmBlock const& block = single[0].getBlocks().back();
    check(block.getAddress() == begin + page && block.getSize() == page &&
          block.getFlags() == (Vn::LmBlock::Read | Vn::LmBlock::Write | Vn::LmBlock::CopyOnWrite));
    return 0;
}
