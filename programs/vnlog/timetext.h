#pragma once

#include "logsource.h"
#include "zone.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vnlog
{

/// Appends a number with leading zeros.
void putNumber(std::string& target, std::int64_t number, int width);

/// Writes times as people read them. One thread.
class TimeText
{
public:
    /// `digits` behind the second, 0 to 9; what is left out is cut and not rounded.
    TimeText(Zone zone, int digits);

    /// "2026-11-22 17:17:56.123456", of nanoseconds since 1970 UTC.
    void putDate(std::string& target, std::int64_t nanoseconds);

    /// "    12.345678", in seconds, right-justified so that five digits stand before the point; with a sign if it is wanted or below 0.
    void putSeconds(std::string& target, std::int64_t nanoseconds, bool hasSign) const;

private:
    void putFraction(std::string& target, std::int64_t nanoseconds) const;

    Zone _zone;
    int _digits;
    std::optional<std::int64_t> _second;  ///< whose text is kept: lines of one second share it
    std::string _text;
};

}  // namespace vnlog
