// A line on the terminal that says how far a performance run is. Nothing is printed where nobody watches, so output
// in files stays the same.
#include <base/testprogress_p.h>

#include <base/osterminal.h>

#include <cstdio>

namespace Vn
{
namespace
{
constexpr std::chrono::milliseconds interval(100);  ///< between two prints, so that printing costs a run nothing
}  // namespace

TestProgress::TestProgress() : _isWatched(OsTerminal::isStandardError()) {}

/// Blanks out the line, which the next output then overwrites.
TestProgress::~TestProgress()
{
    if (_isShown)
        std::fprintf(stderr, "\r%79s\r", "");
}

void TestProgress::show(char const* group, int cycle, int cycles)
{
    if (!_isWatched)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (_isShown && now - _last < interval)
        return;
    _last = now;
    _isShown = true;
    std::fprintf(stderr, "\r%-47s cycle %d of %d ...", group, cycle + 1, cycles);
}

}  // namespace Vn
