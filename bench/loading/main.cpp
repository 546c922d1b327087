// Loading and unloading a library with ten packages under an InReinitGuard, in a process in which others run already;
// beside a library that only has static objects. The packages start with the end of the guard and leave when the library
// is unloaded.
//
//     benchloading [ROUNDS]
#include "../manypackages.h"
#include "../rounds.h"
#include "../workfolder.h"

#include <base/ininitmgr.h>
#include <base/inpackages.h>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace
{
using Packages = std::vector<std::unique_ptr<Vn::InPackageInit>>;

void* open(char const* name)
{
    static const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    void* const library = ::dlopen((folder / name).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "benchloading: %s\n", ::dlerror());
        std::exit(1);
    }
    return library;
}

VnBench::Rounds::Measure loading(char const* name)
{
    return [name] {
        return VnBench::timeOfEach(20,
                                   [name] {
                                       void* library = nullptr;
                                       {
                                           const Vn::InReinitGuard guard;
                                           library = open(name);
                                       }
                                       ::dlclose(library);
                                   }) /
               1e3;
    };
}

Packages makePackages(std::size_t count)
{
    const Vn::InReinitGuard guard;
    Packages packages;
    for (std::size_t i = 0; i < count; ++i)
        packages.emplace_back(VnBench::getPackageTypes()[i].make(("resident" + std::to_string(i)).c_str(), {}));
    return packages;
}
}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 50;
    const VnBench::WorkFolder folder;
    int noArguments = 0;
    char const* const* noVector = nullptr;
    VnBench::Rounds::printHead();
    {
        const Vn::InInitGuard guard(noArguments, noVector);
        for (std::size_t count : {0, 1000, 10000}) {
            const Packages residents = makePackages(count);
            VnBench::Rounds loads("load and unload, " + std::to_string(count) + " others", "us");
            loads.add("ten packages", loading("libbenchguest.so"));
            loads.add("ten static objects", loading("libbenchplain.so"));
            loads.run(rounds);
        }
    }
    return 0;
}
