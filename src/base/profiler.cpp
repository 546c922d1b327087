// The two ways to print a profiler. They write the same rows, but not with the same means:
//
//     a standard stream    in the stream's precision and locale, adjusted left; each row ends with a flush
//     a log message        nine decimals, whatever the locale, so that log files of all machines look alike
//
// The measuring itself is in profiler.imp, as Profiler is a template. Printing only reads, but reading a profiler
// while another thread ends its cycles is a race: a profiler belongs to one thread.
#include <base/profiler.h>

#include <base/exreasontext_p.h>
#include <base/lgstream.h>
#include <base/profrows_p.h>

#include <charconv>

namespace Vn
{
namespace
{
/// A number as "%.9f" gives it in the "C" locale. printf() itself would take the decimal point from the current
/// locale.
class NineDigits
{
public:
    explicit NineDigits(double value)
    {
        *std::to_chars(_text, _text + sizeof _text - 1, value, std::chars_format::fixed, 9).ptr = '\0';
    }

    char const* get() const { return _text; }

private:
    char _text[336];  // the largest number has 309 digits before the point
};
}  // namespace

ProfilerBase::~ProfilerBase() = default;

std::ostream& operator<<(std::ostream& stream, ProfilerBase const& profiler)
{
    ProfRows rows(stream);  // sets the format, and restores the stream's own at the end
    stream << "Profiler " << ExReasonText::orEmpty(profiler.getName()) << ":" << std::endl;
    rows.writeSums(profiler);
    rows.write("Standard dev:", profiler.standardDeviation());
    return stream << std::endl;
}

// Intended: literal columns instead of a format, and "Total time  :" with two blanks, which makes all labels equally
// long; the text is part of the interface. Do not mend.
LgStream& operator<<(LgStream& stream, ProfilerBase const& profiler)
{
    stream << "Profiler " << ExReasonText::orEmpty(profiler.getName()) << ":\n";
    stream << "        Nb of cycles:   " << profiler.cycles() << "\n";
    stream << "        Total time  :   " << NineDigits(profiler.totalTime()).get() << "\n";
    stream << "        Average time:   " << NineDigits(profiler.averageTime()).get() << "\n";
    stream << "        Minimum time:   " << NineDigits(profiler.minTime()).get() << "\n";
    stream << "        Maximum time:   " << NineDigits(profiler.maxTime()).get() << "\n";
    stream << "        Standard dev:   " << NineDigits(profiler.standardDeviation()).get() << "\n";
    return stream << "\n";
}

// The two instances that the library holds.
template class Profiler<HwIntervalTimer>;
template class Profiler<TodIntervalTimer>;

}  // namespace Vn
