// Lists of timed runs, of any text. What is run is what the list says when it is read word by word here; what is refused, is
// refused with a message of the library.
#include <base/exinternalerror.h>
#include <base/testgroup.h>
#include <base/testperformer.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace
{
void check(bool condition)
{
    if (!condition)
        std::abort();
}

using Words = std::vector<std::string>;

std::vector<Words> runs;

struct Enough
{};

/// Tells what it was run with, so many times in one list.
class Telling : public Vn::TestGroup
{
public:
    explicit Telling(char const* name) : TestGroup(name), _name(name) {}

    void execute(int argc, char** const argv) override
    {
        if (runs.size() == 300)
            throw Enough();
        Words words{_name};
        words.insert(words.end(), argv, argv + argc);
        runs.push_back(words);
    }

private:
    std::string _name;
};

Telling sorting("sorting");
Telling a("a");

/// The words of the lines as far as they are well-formed; a line that isn't ends them.
bool isRunOf(std::string const& list, std::vector<Words> const& found)
{
    std::istringstream stream(list);
    std::size_t next = 0;
    for (std::string line; std::getline(stream, line);) {
        if (line.size() > 254)
            return true;  // what becomes of it is told with the class
        line = line.c_str();
        Words words;
        std::istringstream split(line);
        for (std::string word; std::getline(split, word, ' ');)
            if (!word.empty())
                words.push_back(word);
        if (words.size() < 2)
            return true;  // what the record held before counts
        const long cycles = std::strtol(words[1].c_str(), nullptr, 10);
        words.erase(words.begin() + 1);
        for (long cycle = 0; cycle < cycles; ++cycle, ++next) {
            if (next == found.size())
                return found.size() == 300;
            if (found[next] != words)
                return false;
        }
    }
    return next == found.size();
}

class Nothing : public std::streambuf
{
    int overflow(int character) override { return character; }
};
}  // namespace

/// The trace goes to the standard output.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    static Nothing nothing;
    std::cout.rdbuf(&nothing);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static const int file = ::memfd_create("list", MFD_CLOEXEC);
    static const std::string name = "/proc/self/fd/" + std::to_string(file);
    check(::ftruncate(file, 0) == 0 && ::pwrite(file, data, size, 0) == static_cast<::ssize_t>(size));
    runs.clear();
    bool isRead = false;
    try {
        Vn::TestPerformer::getInstance().execute(Vn::OsFilePath(name.c_str()));
        isRead = true;
    } catch (Vn::ExInternalError const& failure) {
        check(runs.empty() && *failure.getReason() != '\0');
    } catch (Enough const&) {
        isRead = true;
    }
    if (isRead)
        check(isRunOf(std::string(reinterpret_cast<char const*>(data), size), runs));
    std::ostringstream table;
    table << Vn::TestPerformer::getInstance();
    return 0;
}
