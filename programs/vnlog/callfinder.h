#pragma once

#include "tracecalls.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vnlog
{

/// Finds the calls of one thread from the lines of its trace.
///
///     CallFinder finder;
///     finder.addLine(0, parseTraceLine("+ f"));
///     finder.addLine(1, parseTraceLine("  /"));
///     finder.getCalls();                         // one call, from line 0 to line 1
///
/// TraceCalls (tracecalls.h) does the same for one line after the other, in less memory, where each thread has a depth of its own.
/// Calls nest strictly as long as no line is lost, so a "/" ends the call that was entered last, whatever its indentation: threads
/// may share one depth. Behind a loss the indentation decides, until all calls are closed.
/// Tests: tests/vnlog/callfindertest.cpp.
class CallFinder
{
public:
    static constexpr std::uint64_t none = UINT64_MAX;

    struct Call
    {
        std::uint64_t entered = none;  ///< index of the line
        std::uint64_t left = none;     ///< index of the line that ended it; none for a call that is open at the end
        int level = 0;                 ///< number of open calls around it
        bool isCut = false;            ///< `left` isn't its own "/", which was lost, but the line that shows it
    };

    /// `index` grows from call to call of this function. Names must not change until the next line.
    void addLine(std::uint64_t index, TraceLine const& line);

    /// Lines of this thread are missing here.
    void addLoss();

    /// The depth at which the thread's next line is drawn, if the thread has a depth of its own: how many calls are open. -1 behind a
    /// loss, as nobody knows.
    int getExpectedDepth() const { return _isLossy ? -1 : static_cast<int>(_open.size()); }

    /// In the order in which they were entered.
    std::vector<Call> const& getCalls() const { return _calls; }

    /// Ends of calls whose beginnings aren't there.
    std::uint64_t getUnmatchedCount() const { return _unmatched; }

private:
    struct Open
    {
        std::size_t call;
        int depth;
        std::string name;  // only of calls without indentation, whose ends bear the name
    };

    void enter(std::uint64_t index, TraceLine const& line);
    void leave(std::uint64_t index, TraceLine const& line);
    void cutTo(std::size_t count, std::uint64_t index);
    std::size_t findLeft(TraceLine const& line) const;

    std::vector<Call> _calls;
    std::vector<Open> _open;
    std::uint64_t _unmatched = 0;
    bool _isLossy = false;
};

}  // namespace vnlog
