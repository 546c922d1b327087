// Names of locks, of any bytes: each gives one element of a path that a file system takes, and the name can be told from it, so
// that two locks have two files.
#include <base/lginterprocesslockname_p.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{
void check(bool condition)
{
    if (!condition)
        std::abort();
}

/// The lock's name again, from a file name that has not been cut.
std::string decode(std::string const& file)
{
    std::string name;
    for (std::size_t i = 0; i < file.size(); ++i) {
        if (file[i] != '%') {
            name += file[i];
            continue;
        }
        check(i + 2 < file.size());
        name += static_cast<char>(std::stoi(file.substr(i + 1, 2), nullptr, 16));
        i += 2;
    }
    return name;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const std::string lock(reinterpret_cast<char const*>(data), size);
    const std::string file = Vn::getLockFileName(lock);
    check(file.size() <= 217);
    check(file.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-_%~") ==
          std::string::npos);
    if (file.find('~') == std::string::npos) {
        check(file.size() <= 200 && decode(file) == lock);
        return 0;
    }
    check(file.size() == 217 && file[200] == '~');
    // A change anywhere, also behind what is left of the name, gives another file.
    std::string other = lock;
    other.back() = static_cast<char>(other.back() ^ 1);
    check(Vn::getLockFileName(other) != file);
    check(Vn::getLockFileName(lock + "x") != file);
    return 0;
}
