// Reading a number in the "C" locale. Windows has no other form: its standard library has std::from_chars for all numbers.
#include <base/invalueform_p.h>

#include <cerrno>
#include <clocale>

#include <locale.h>
#include <stdlib.h>

namespace Vn
{
namespace
{
/// The program's own locale may have a comma. This one is a constant of the C library: nothing is allocated, and nothing to free.
::locale_t cLocale()
{
    static const ::locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

template <class Float>
void readBy(Float (*function)(char const*, char**, ::locale_t), char const* text, char const*& rest, Float& value)
{
    const int kept = errno;
    char* end = nullptr;
    value = function(text, &end, cLocale());
    rest = end;
    errno = kept;
}
}  // namespace

void readByCLibrary(char const* text, char const*& rest, float& value)
{
    readBy(&::strtof_l, text, rest, value);
}

void readByCLibrary(char const* text, char const*& rest, double& value)
{
    readBy(&::strtod_l, text, rest, value);
}

}  // namespace Vn
