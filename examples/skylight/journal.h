#pragma once

#include <threadlog/threadlog.h>

#include <base/hwintervaltimer.h>
#include <base/profiler.h>

#include <string>

namespace Skylight
{

/// Reports on the program's work: messages and times go to the library's log, progress to standard error.
///
/// Create at most one at a time, between the start and the stop of the library. One thread.
class Journal
{
public:
    /// Sets up logging. With `isQuiet` nothing goes to standard error.
    explicit Journal(bool isQuiet);

    Journal(Journal const&) = delete;
    Journal& operator=(Journal const&) = delete;

    /// Logs a message at the level Informational.
    void tell(std::string const& message);

    /// The two ends of a pass. endPass() logs its time.
    /// @{
    void startPass();
    void endPass(unsigned int pass, unsigned int count);
    /// @}

    /// Logs the total time of all passes, the shortest and the longest.
    void tellTimes();

private:
    bool _isQuiet;
    Vn::ThreadLog _log;
    Vn::Profiler<Vn::HwIntervalTimer> _passes;
};

}  // namespace Skylight
