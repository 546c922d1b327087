// What vnlog takes on its command line, and dates: any text is read or refused, and what is read says the same again.
#include <filter.h>
#include <merge.h>
#include <timetext.h>
#include <zone.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace
{
using namespace vnlog;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

void checkZone(std::string const& text)
{
    // A name is looked up in the system's table; here only the forms that aren't names.
    if (text.empty() || (text[0] != '+' && text[0] != '-'))
        return;
    try {
        const Zone zone = Zone::parse(text);
        const long offset = zone.getOffset(0);
        check(offset > -100 * 3600 && offset < 100 * 3600);
    } catch (std::runtime_error const&) {
        return;
    }
}

/// A date that is read is written in the same way.
void checkDate(std::string const& text)
{
    const auto date = parseDate(text);
    if (!date)
        return;
    const auto time = Zone().find(*date);
    if (time && date->second < 60)
        check(Zone().getDate(*time) == *date);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const std::string text(reinterpret_cast<char const*>(data), size);
    const std::size_t half = text.find('|');
    const std::string first = text.substr(0, half);
    const std::string second = half == std::string::npos ? "" : text.substr(half + 1);

    check(isLike(first, "*"));
    isLike(first, second);
    check(parseLevel(first) >= -1 && parseLevel(first) <= 6);
    parseTime(first, Zone());
    const FileOperand operand = parseOperand(first);
    check(operand.name.size() <= first.size() && (operand.hasOffset || operand.name == first));
    for (std::string const& word : getWords(first))
        check(!word.empty() && word.find(',') == std::string::npos);
    parseResolution(first);
    checkZone(first);
    checkDate(first);
    return 0;
}
