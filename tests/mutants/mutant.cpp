// The library behind mutant.h: asks the environment once, before any other library of the process begins. Goes by system
// calls, as tests stand in front of the C library's own.
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {
unsigned vnMutantChosen = 0;
unsigned char* vnMutantReached = nullptr;
}

namespace
{

constexpr long reachedSize = 1 << 16;

char const* variable(char const* name)
{
    const std::size_t size = std::strlen(name);
    for (char** entry = ::environ; entry && *entry; ++entry) {
        if (std::strncmp(*entry, name, size) == 0 && (*entry)[size] == '=') {
            return *entry + size + 1;
        }
    }
    return nullptr;
}

__attribute__((constructor)) void ask()
{
    if (char const* const chosen = variable("VN_MUTANT")) {
        for (char const* digit = chosen; *digit; ++digit) {
            vnMutantChosen = vnMutantChosen * 10 + static_cast<unsigned>(*digit - '0');
        }
    }
    if (char const* const path = variable("VN_MUTANT_REACHED")) {
        const long file = ::syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (file >= 0 && ::syscall(SYS_ftruncate, file, reachedSize) == 0) {
            const long bytes =
                ::syscall(SYS_mmap, nullptr, reachedSize, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
            if (bytes > 0) {
                vnMutantReached = reinterpret_cast<unsigned char*>(bytes);
            }
        }
        ::syscall(SYS_close, file);
    }
}

}  // namespace
