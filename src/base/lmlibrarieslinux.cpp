// lmlibrarieslinux.cpp (Windows form: lmlibrarieswindows.cpp)
//
// Two sources, joined by LmMap:
//
//     dl_iterate_phdr()     the objects that the loader knows: name, and the addresses of their segments
//     /proc/self/maps       every mapping of the process, with its protection
//
// The map alone would do for files, but not for objects without a file, such as the kernel's vdso; the loader alone
// knows the protection that the segments were built for, but not the one they have now. The objects are taken first.
// Another thread may unload one before the map is read: it then has no blocks.
#include <base/lmlibraries_p.h>

#include <base/lmmap_p.h>
#include <base/osposix_p.h>

#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace Vn::System
{
namespace
{
/// Path of the program, for which the loader has an empty name. "Unknown" without /proc.
std::string programPath()
{
    char path[LmMap::longestPath];  // readlink() cuts, and writes no terminator
    const ::ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : "Unknown";
}

/// What the callback fills. `isComplete` is false once memory has run out.
struct Collection
{
    std::uintptr_t pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    std::vector<LmMap::Object> objects;
    bool isComplete = true;
};

/// From the lowest to the highest loaded segment, rounded to whole pages. One without such a segment has begin > end.
LmMap::Object objectOf(::dl_phdr_info const& info, std::uintptr_t pageSize)
{
    LmMap::Object object{UINTPTR_MAX, 0, info.dlpi_name};
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        auto const& header = info.dlpi_phdr[i];
        if (header.p_type != PT_LOAD)
            continue;
        LmMap::addSegment(object, info.dlpi_addr + header.p_vaddr, header.p_memsz, pageSize);
    }
    return object;
}

/// Callback of dl_iterate_phdr(), which holds the loader's lock and is C code: an exception that passed through it
/// would leave the lock held. So a failure is noted, and any result but 0 ends the iteration.
int addObject(::dl_phdr_info* info, std::size_t, void* data) noexcept
{
    Collection& collection = *static_cast<Collection*>(data);
    try {
        const LmMap::Object object = objectOf(*info, collection.pageSize);
        if (object.begin < object.end)
            collection.objects.push_back(object);
    } catch (std::bad_alloc const&) {
        collection.isComplete = false;
    }
    return collection.isComplete ? 0 : 1;
}

std::vector<LmMap::Object> loadedObjects()
{
    Collection collection;
    ::dl_iterate_phdr(addObject, &collection);
    if (!collection.isComplete)
        throw std::bad_alloc();
    // Outside the callback: readlink() need not run under the loader's lock.
    for (LmMap::Object& object : collection.objects)
        if (object.path.empty())
            object.path = programPath();
    return std::move(collection.objects);
}

/// The whole text of the map. False, with `errno` set, if it can't be opened or read.
bool readMap(std::string& map)
{
    const Posix::Descriptor file(Posix::openFile("/proc/self/maps", O_RDONLY));
    if (!file.isOpen())
        return false;
    char part[16384];  // the kernel gives whole lines, a page or so at a time
    for (;;) {
        const ::ssize_t length = Posix::retry([&] { return ::read(file.get(), part, sizeof part); });
        if (length <= 0)
            return length == 0;
        map.append(part, static_cast<std::size_t>(length));
    }
}
}  // namespace

bool addLoadedModules(std::vector<LmLibrary>& libraries)
{
    // The loader first: see above.
    std::vector<LmMap::Object> objects = loadedObjects();
    std::string map;
    if (!readMap(map))
        return false;
    LmMap::addModules(std::move(objects), map, libraries);
    return true;
}

}  // namespace Vn::System
