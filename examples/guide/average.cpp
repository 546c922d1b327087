// average: the mean of the numbers in a file, and what to say if there is none. Its page is docs/errors.md.
#include <base/assertions.h>
#include <base/exbase.h>
#include <base/objptr.h>
#include <base/osfilereader.h>
#include <base/osterminal.h>
#include <base/vector.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <string>

namespace
{
constexpr char sourceName[] = "examples/guide/average";

/// A word of the file is no number.
class ExNoNumber : public std::runtime_error, public Vn::ExBase
{
public:
    ExNoNumber(char const* file, int line, std::string const& word) : std::runtime_error(""), ExBase(file, line)
    {
        setReason("not a number: ");
        setReason(word.c_str());
    }

    VN_EX_MEMBERS();
};
VN_EX_DEFINE_MEMBERS(ExNoNumber);

std::string readText(char const* path)
{
    Vn::OsFileReader reader{Vn::OsFilePath(path)};
    std::string text;
    char block[4096];
    while (const std::uint32_t count = reader.read(block, sizeof block))
        text.append(block, count);
    return text;
}

Vn::ObjPtrRet<Vn::Vector<double>> readNumbers(char const* path)
{
    Vn::ObjPtr<Vn::Vector<double>> numbers(new Vn::Vector<double>);
    std::istringstream words(readText(path));
    for (std::string word; words >> word;) {
        char* end = nullptr;
        numbers->push_back(std::strtod(word.c_str(), &end));
        if (*end != '\0')
            throw ExNoNumber(sourceName, __LINE__, word);
    }
    return numbers;
}

double meanOf(Vn::ObjPtr<Vn::Vector<double>> numbers)
{
    if (numbers->empty())
        Vn::Assertions::throwAssertionFailed(sourceName, __LINE__, "!numbers->empty()");
    return std::accumulate(numbers->begin(), numbers->end(), 0.0) / static_cast<double>(numbers->size());
}
}  // namespace

int main(int argc, char** argv)
{
    char const* const path = argc > 1 ? argv[1] : "";
    try {
        std::cout << meanOf(readNumbers(path)) << "\n";
        return 0;
    } catch (std::exception const& failure) {
        std::cerr << "average: '" << Vn::OsTerminal::shown(path) << "': " << Vn::OsTerminal::shown(failure.what())
                  << "\n";
        return 1;
    }
}
