#include "timetext.h"

#include <charconv>
#include <utility>

namespace vnlog
{
namespace
{
constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr int secondsWidth = 5;
}  // namespace

void putNumber(std::string& target, std::int64_t number, int width)
{
    char digits[20];
    auto const [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    const int length = static_cast<int>(end - digits);
    if (length < width)
        target.append(static_cast<std::size_t>(width - length), '0');
    target.append(digits, static_cast<std::size_t>(length));
}

TimeText::TimeText(Zone zone, int digits) : _zone(std::move(zone)), _digits(digits) {}

void TimeText::putDate(std::string& target, std::int64_t nanoseconds)
{
    std::int64_t second = nanoseconds / nanosecondsPerSecond;
    std::int64_t rest = nanoseconds % nanosecondsPerSecond;
    if (rest < 0) {
        --second;
        rest += nanosecondsPerSecond;
    }
    if (_second != second) {
        _second = second;
        const Civil date = _zone.getDate(static_cast<std::time_t>(second));
        _text.clear();
        putNumber(_text, date.year, 4);
        for (const auto& [mark, number] :
             {std::pair('-', date.month), std::pair('-', date.day), std::pair(' ', date.hour),
              std::pair(':', date.minute), std::pair(':', date.second)}) {
            _text += mark;
            putNumber(_text, number, 2);
        }
    }
    target += _text;
    putFraction(target, rest);
}

void TimeText::putSeconds(std::string& target, std::int64_t nanoseconds, bool hasSign) const
{
    const bool isNegative = nanoseconds < 0;
    const std::int64_t amount = isNegative ? -nanoseconds : nanoseconds;
    std::string text = isNegative ? "-" : hasSign ? "+" : "";
    putNumber(text, amount / nanosecondsPerSecond, 1);
    if (text.size() < secondsWidth)
        target.append(secondsWidth - text.size(), ' ');
    target += text;
    putFraction(target, amount % nanosecondsPerSecond);
}

void TimeText::putFraction(std::string& target, std::int64_t nanoseconds) const
{
    if (_digits == 0)
        return;
    target += '.';
    for (int i = _digits; i < 9; ++i)
        nanoseconds /= 10;
    putNumber(target, nanoseconds, _digits);
}

}  // namespace vnlog
