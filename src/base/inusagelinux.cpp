// inusagelinux.cpp (Windows form: inusagewindows.cpp)
//
// The loader's list of objects, of which those named like a library of the family are asked for the entry that it exports.
// Opening one that is loaded only counts it once more, so nothing is loaded and nothing is initialised here.
#include <base/inusage_p.h>

#include <dlfcn.h>
#include <link.h>

#include <cstring>

namespace Vn::System
{
namespace
{
char const* fileNameOf(char const* path)
{
    char const* const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

/// The paths alone: the loader holds a lock meanwhile.
int collect(::dl_phdr_info* info, std::size_t, void* paths)
{
    if (info->dlpi_name != nullptr && std::strncmp(fileNameOf(info->dlpi_name), "libVN", 5) == 0)
        static_cast<std::vector<std::string>*>(paths)->emplace_back(info->dlpi_name);
    return 0;
}

/// Null if the library exports none. The look-up goes on into libraries that this one depends on, so the result must
/// lie in it.
void* findOwnEntry(std::string const& path)
{
    void* const library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr)
        return nullptr;
    void* const address = ::dlsym(library, "getBuildInfo");
    ::Dl_info place = {};
    const bool isOwn = address != nullptr && ::dladdr(address, &place) != 0 && path == place.dli_fname;
    ::dlclose(library);
    return isOwn ? address : nullptr;
}
}  // namespace

std::vector<FamilyLibrary> getFamilyLibraries()
{
    std::vector<std::string> paths;
    ::dl_iterate_phdr(collect, &paths);
    std::vector<FamilyLibrary> libraries;
    for (std::string const& path : paths)
        if (void* const address = findOwnEntry(path))
            libraries.push_back({fileNameOf(path.c_str()), reinterpret_cast<DbgBuildInfo* (*)()>(address)});
    return libraries;
}

}  // namespace Vn::System
