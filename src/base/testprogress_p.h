// Private to testperformer.cpp and testprogress.cpp; implemented in testprogressposix.cpp and testprogresswindows.cpp.
// testprogresswindows.cpp.
#pragma once

#include <chrono>

namespace Vn
{

/// Tells on the standard error stream how far a performance run is, if that is a terminal, ten times a second at
/// most; wipes it out at the end.
class TestProgress
{
public:
    TestProgress();
    ~TestProgress();
    TestProgress(TestProgress const&) = delete;
    TestProgress& operator=(TestProgress const&) = delete;

    void show(char const* group, int cycle, int cycles);

private:
    bool _isWatched;
    bool _isShown = false;
    std::chrono::steady_clock::time_point _last{};
};

namespace System
{
/// Platform side.
bool isErrorStreamATerminal();
}  // namespace System

}  // namespace Vn
