// Option strings and argument vectors of any kind, each element an allocation of its own so that the address sanitizer
// sees a read behind it. The walk must end, and its index must stay within the vector.
#include <base/inoptionparser.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
/// The input as texts that end at zero bytes: first the option string, then the elements.
std::vector<std::string> split(std::uint8_t const* data, std::size_t size)
{
    std::vector<std::string> texts(1);
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 0)
            texts.emplace_back();
        else
            texts.back() += static_cast<char>(data[i]);
    }
    return texts;
}

void check(bool condition)
{
    if (!condition)
        std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const std::vector<std::string> texts = split(data, size);
    std::vector<std::unique_ptr<char[]>> elements;
    std::size_t characters = 0;
    for (std::size_t i = 1; i < texts.size(); ++i) {
        elements.emplace_back(new char[texts[i].size() + 1]);
        std::memcpy(elements.back().get(), texts[i].c_str(), texts[i].size() + 1);
        characters += texts[i].size();
    }
    const std::unique_ptr<char*[]> argv(new char*[elements.size()]);
    for (std::size_t i = 0; i < elements.size(); ++i)
        argv[i] = elements[i].get();

    const int argc = static_cast<int>(elements.size());
    Vn::InOptionParser parser(argc, argv.get(), texts[0].c_str());
    std::size_t steps = 0;
    for (int option = parser.getOption(); option != -1; option = parser.getOption()) {
        check(++steps <= characters);
        check(option == '?' || std::strchr(texts[0].c_str(), option) != nullptr);
        check(parser.getArgumentIndex() >= 0 && parser.getArgumentIndex() < argc);
        if (option % 5 == 0)
            while (parser.gotoNextValue() != nullptr)
                check(parser.getArgumentIndex() < argc);
        else if (parser.getValue() != nullptr)
            check(std::strlen(parser.getValue()) <= characters);
    }
    check(parser.getArgumentIndex() <= argc + 1);
    // The letter 255 reads as the end, but the walk may go on behind it.
    if (texts[0].find('\xff') == std::string::npos)
        check(parser.getOption() == -1);
    for (std::size_t i = 0; i < elements.size(); ++i)
        check(texts[i + 1] == elements[i].get());
    return 0;
}
