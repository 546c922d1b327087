// lmlibrarieslinux.cpp (Windows form: lmlibrarieswindows.cpp)
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
/// The loader has no name for the program itself.
std::string programPath()
{
    char path[LmMap::longestPath];
    const ::ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : "Unknown";
}

struct Collection
{
    std::uintptr_t pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    std::vector<LmMap::Object> objects;
    bool isComplete = true;
};

LmMap::Object objectOf(::dl_phdr_info const& info, std::uintptr_t pageSize)
{
    LmMap::Object object{UINTPTR_MAX, 0, info.dlpi_name};
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        auto const& header = info.dlpi_phdr[i];
        if (header.p_type != PT_LOAD)
            continue;
        const std::uintptr_t begin = info.dlpi_addr + header.p_vaddr;
        const std::uintptr_t end = begin + header.p_memsz;
        object.begin = std::min(object.begin, begin / pageSize * pageSize);
        object.end = std::max(object.end, (end + pageSize - 1) / pageSize * pageSize);
    }
    return object;
}

/// The loader holds a lock meanwhile, so no exception passes through it.
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
    for (LmMap::Object& object : collection.objects)
        if (object.path.empty())
            object.path = programPath();
    return std::move(collection.objects);
}

bool readMap(std::string& map)
{
    const Posix::Descriptor file(Posix::openFile("/proc/self/maps", O_RDONLY));
    if (!file.isOpen())
        return false;
    char part[16384];
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
    std::vector<LmMap::Object> objects = loadedObjects();
    std::string map;
    if (!readMap(map))
        return false;
    LmMap::addModules(std::move(objects), map, libraries);
    return true;
}

}  // namespace Vn::System
