// Sub-option texts of any kind: the pieces must lie within the text, in order, and the walk must end.
#include <base/inoptionparser.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const std::unique_ptr<char[]> text(new char[size + 1]);
    std::memcpy(text.get(), data, size);
    text[size] = '\0';

    char a[] = "a";
    char size2[] = "size";
    char empty[] = "";
    char* const tokens[] = {a, size2, empty, nullptr};
    char* position = text.get();
    while (*position != '\0') {
        char* const before = position;
        char* value = nullptr;
        const int found = Vn::InOptionParser::getSubOption(&position, tokens, &value);
        if (position <= before || position > text.get() + size || found < -1 || found > 2)
            std::abort();
        if (found == -1 && value != before)
            std::abort();
        if (found >= 0 && (std::strcmp(before, tokens[found]) != 0 || (value != nullptr && value <= before)))
            std::abort();
    }
    return 0;
}
