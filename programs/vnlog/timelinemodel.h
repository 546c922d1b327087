#pragma once

#include "callfinder.h"
#include "logline.h"
#include "profilelines.h"
#include "zone.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace vnlog
{

/// All lines of one or more logs as columns of numbers, in the order of time: what a timeline page holds.
///
///     TimelineModel model;
///     const int source = model.addSource("render.log");
///     while (lines.next(line))
///         model.addLine(source, line, line.run < 0 ? nullptr : &lines.getRun(line.run));
///     model.finish();
///     model.encode();                // the bytes that the page's script reads; see page/model.js
///
/// Each thread of each run of each source is a lane, in which lines are messages, losses, or calls drawn by the trace. Lines that
/// bear no thread have a lane of their own beside those. A line without a time stamp has the time of the stamped line before it in
/// its source; in sources without any stamp, each line takes a microsecond.
/// Memory: about 50 bytes for a line, 8 for each number in its text, and each text once whose numbers alone differ.
/// Tests: tests/vnlog/timelinemodeltest.cpp.
class TimelineModel
{
public:
    /// What a row is drawn as; the values are the page's, too.
    enum class RowKind : unsigned char
    {
        Message,
        Loss,
        Entered,
        Left,
        TraceText,
        Banner,
        Plain,
        Profile
    };

    struct Lane
    {
        int source = 0;
        int run = -1;            ///< of the source, as LogLine tells it
        bool hasThread = false;  ///< otherwise the lane of lines that bear no thread
        std::uint32_t thread = 0;
        std::uint64_t rows = 0, unmatched = 0;
    };

    struct Row
    {
        std::int64_t time = 0;      ///< nanoseconds; since the earliest row behind finish()
        std::uint64_t line = 0;     ///< number of the line in its source
        std::uint64_t numbers = 0;  ///< index of the first number of its text
        std::uint64_t lost = 0;     ///< of a loss
        std::uint32_t text = 0;     ///< index of the text's form
        std::uint32_t lane = 0;
        RowKind kind = RowKind::Plain;
        signed char level = -1;
        bool isOrdinal = false;  ///< no stamp came before it
    };

    /// A call between two rows; `left` is CallFinder::none for one that doesn't end.
    struct Call
    {
        std::uint64_t entered, left;
        std::uint32_t lane;
        int level;
        bool isCut;
    };

    struct Report
    {
        ProfileReport figures;
        std::uint64_t row = 0;
    };

    /// Longer texts are cut in the page, which then tells how many bytes are missing.
    static constexpr std::size_t longestText = 16384;

    /// Dates are shown as clocks in that zone show them.
    explicit TimelineModel(Zone zone = Zone::getLocal());
    TimelineModel(TimelineModel const&) = delete;
    TimelineModel& operator=(TimelineModel const&) = delete;
    ~TimelineModel();

    /// The number of a new source.
    int addSource(std::string name);

    /// Adds the next line of the source with that number, or a further piece of it. `run` is that of the line, null before the first
    /// banner.
    void addLine(int number, LogLine const& line, Run const* run);

    /// Puts all rows into the order of time. Nothing is added after it.
    void finish();

    std::vector<Lane> const& getLanes() const { return _lanes; }
    std::vector<Row> const& getRows() const { return _rows; }
    std::vector<Call> const& getCalls() const { return _calls; }
    std::vector<Report> const& getReports() const { return _reports; }

    /// The text of a row, put together again.
    std::string getText(std::uint64_t row) const;

    /// The page's data, not yet compressed: the length of a JSON text in four bytes, the lowest first; that text; the columns that it
    /// lists.
    std::string encode() const;

private:
    struct Source;
    struct RunStart;
    struct Form;

    std::uint32_t findLane(int source, int run, std::optional<std::uint32_t> thread);
    RunStart& findRun(int source, int index, Run const* run);
    void setText(Row& row, std::string_view text);
    void completeLine(Source& source);
    void endReport(Source& source);
    std::int64_t getTime(Source& source, LogLine const& line, Run const* run);
    std::int64_t civilSeconds(std::time_t time) const;
    void setStarts();
    std::vector<std::uint64_t> sortRows();
    std::string encodeMeta(std::vector<std::pair<std::string, std::string>> const& columns) const;

    std::vector<std::unique_ptr<Source>> _sources;
    std::vector<Lane> _lanes;
    std::vector<CallFinder> _finders;  // of the lanes
    std::map<std::tuple<int, int, bool, std::uint32_t>, std::uint32_t> _laneIndex;
    std::map<std::pair<int, int>, RunStart> _runs;
    std::vector<Row> _rows;
    std::vector<std::uint64_t> _numbers;
    std::vector<Form> _forms;
    std::unordered_map<std::string, std::uint32_t> _formIndex;
    std::vector<Call> _calls;
    std::vector<Report> _reports;
    Zone _zone;
    std::int64_t _start = 0;  // civil time of the earliest row in nanoseconds, if a run has a date
    bool _hasDate = false, _isOrdinal = true;
};

}  // namespace vnlog
