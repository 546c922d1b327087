// Private to testperformer.cpp and testprogress.cpp.
#pragma once

#include <chrono>

namespace Vn
{

/// Shows the progress of a performance run on standard error, if that is a terminal: a line that is overwritten at most
/// ten times a second, and blanked out at the end. Nothing is printed where nobody watches.
class TestProgress
{
public:
    TestProgress();
    ~TestProgress();
    TestProgress(TestProgress const&) = delete;
    TestProgress& operator=(TestProgress const&) = delete;

    /// Says that the group is in cycle `cycle`, counted from 0, of `cycles`.
    void show(char const* group, int cycle, int cycles);

private:
    bool _isWatched;
    bool _isShown = false;
    std::chrono::steady_clock::time_point _last{};
};

}  // namespace Vn
