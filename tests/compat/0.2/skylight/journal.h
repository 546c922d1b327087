#pragma once

#include <base/hwintervaltimer.h>
#include <base/lgqueue.h>
#include <base/profiler.h>

#include <string>

namespace Skylight
{

/// What the program tells of its work: messages and times in the library's log, and on the standard error stream, for whoever
/// waits, how far it is. One at a time, while the library is up.
class Journal
{
public:
    /// `isQuiet`: nothing on the standard error stream.
    explicit Journal(bool isQuiet);

    /// Writes what was logged.
    ~Journal();

    Journal(Journal const&) = delete;
    Journal& operator=(Journal const&) = delete;

    void tell(std::string const& message);

    void startPass();
    void endPass(unsigned int pass, unsigned int count);

    /// Logs how long the passes took.
    void tellTimes();

private:
    bool _isQuiet;
    Vn::LgQueue _queue;
    Vn::Profiler<Vn::HwIntervalTimer> _passes;
};

}  // namespace Skylight
