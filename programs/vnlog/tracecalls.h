#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vnlog
{
/// What a line of trace tells.
enum class TraceStep : unsigned char
{
    None,   ///< no drawing: a message like any other
    Enter,  ///< "+ name" or ">>> name"
    Leave,  ///< "/" or "<<< name"
    Text    ///< "| text", or a text behind a process id or a place in the source
};

/// One line of trace, taken apart. The views point into the message.
struct TraceLine
{
    static constexpr int notDrawn = -1;

    TraceStep step = TraceStep::None;
    int depth =
        notDrawn;  ///< calls that are open around it, a call that it leaves included; notDrawn without indentation
    std::string_view text;     ///< name of an Enter; name of a Leave without indentation; else the text
    std::string_view process;  ///< decimal; empty without the option "pid"
    std::string_view file;     ///< empty without the option "line"
    int line = 0;              ///< 0 without the option "line"
};

/// Takes the text of a message of the level "Tracing" apart, the group's name included, as the trace layer draws it:
///
///     "+ scan"                         Enter, depth 0, "scan"
///     "  | + list"                     Enter, depth 2, "list" - or, between depths 1 and 2, Text, depth 1, "+ list"
///     "  | /"                          Leave, depth 2
///     "  | | 14 files"                 Text, depth 2, "14 files"
///     ">>> scan"                       Enter, notDrawn, "scan"
///     "main.cpp   (  78) + scan"       Enter, depth 0, "scan", file "main.cpp", line 78
///     "Cache evicted 17 pages"         None
///
/// `open` is how many calls of the thread are open, as far as its lines tell; where a drawing can be read in two ways, the
/// reading that fits it is taken. -1, or `isSure` false, takes the entry or exit. What a program's own printPrefix() puts in
/// front isn't recognised, unless a place in the source follows. Any bytes; never throws, no allocation.
TraceLine parseTraceLine(std::string_view message, int open = -1, bool isSure = true);

/// The open calls of one thread, kept in step with what its lines draw. Lines may be missing: a drawing that is less deep
/// than expected ends calls, and one that is deeper shows calls whose entry was not seen. Memory: a name for each open call.
/// Tests: tests/vnlog/tracecallstest.cpp.
class TraceCalls
{
public:
    /// What a line changes, in this order: `ended` innermost calls are over, their exit was not seen; then `unseen` calls are
    /// open, their entry was not seen; then what `line` tells. A Leave ends the innermost call of those.
    struct Change
    {
        TraceLine line;
        std::size_t ended = 0;
        std::size_t unseen = 0;
    };

    /// `message` as for parseTraceLine().
    Change take(std::string_view message);

    /// Messages of the thread were lost, so the next drawing counts more than the calls known to be open.
    void setUnsure() { _isSure = false; }

    /// Names of the open calls, outermost first; empty for a call whose entry was not seen.
    std::vector<std::string> const& getOpen() const { return _open; }

private:
    Change leaveByName(TraceLine const& line);

    std::vector<std::string> _open;
    bool _isSure = true;
};

}  // namespace vnlog
