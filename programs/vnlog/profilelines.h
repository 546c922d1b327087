#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vnlog
{

/// What a profiler, a consolidator or a timer has told in the log. Times are in seconds.
struct ProfileReport
{
    enum class Kind : unsigned char
    {
        Profiler,
        Consolidator,
        Timer
    };

    Kind kind = Kind::Profiler;
    std::string name;  ///< empty for a consolidator
    double cycles = 0.0;
    double total = 0.0;
    double average = 0.0;
    double minimum = 0.0;
    double maximum = 0.0;
    double deviation = 0.0;  ///< 0 unless a profiler told it
    int rows = 0;            ///< how many of its rows came; a timer has none
};

/// Puts the lines of a report together: a heading, "Profiler NAME:" or "Profiler Consolidator:", and a row for each figure, as both
/// stream forms write them. "Timer NAME: Total = 1.5" is whole in one line.
///
///     ProfileReader reader;
///     reader.begin("Render Profiler passes:");         // true
///     reader.addRow("        Nb of cycles:   8");      // true
///     reader.addRow("");                               // false: the report ends here
///     reader.end();                                    // the report
///
/// Tests: tests/vnlog/profilelinestest.cpp.
class ProfileReader
{
public:
    /// Whether the message is a heading. A heading ends the report before it: call end() first.
    bool begin(std::string_view message);

    /// Whether a report has begun, and the line is one of its rows.
    bool addRow(std::string_view line);

    /// Whether a heading has come, or a whole timer.
    bool hasBegun() const { return _report.has_value(); }

    /// Whether rows have come as well.
    bool hasRows() const { return _report && _report->rows != 0; }

    /// The report so far; nothing if none has begun, or a heading came without a row.
    std::optional<ProfileReport> end();

private:
    std::optional<ProfileReport> _report;
};

}  // namespace vnlog
