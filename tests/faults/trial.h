#pragma once

#include "act.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace VnTest
{

/// How run() of an act ended.
enum class Ending
{
    returned,
    outOfMemory,   ///< std::bad_alloc
    systemError,   ///< one of the library's, or the standard library's, with a code of the system
    otherError,    ///< something else that derives from std::exception or ExBase
    unknownThrown  ///< nothing of that kind
};

/// What a trial found out, in memory that the process of the trial shares with the one that looks.
struct Findings
{
    Ending ending;
    int error;         ///< of a systemError
    char source[128];  ///< where it was thrown, for the library's own exceptions
    char text[1024];   ///< of what was thrown
    char fault[1024];  ///< what is wrong, "" if nothing
    char place[6000];  ///< calls that led to the first failure, and to a signal that ended the process
    char step[32];     ///< what the process was at last
    long hits;         ///< how often something failed
    long blocks;       ///< held behind it all
    int descriptors;   ///< open behind it all
    int signal;        ///< that ended the process; 0 if it ended by itself
    bool isSkipped;    ///< the system doesn't let it be tried
};

/// What is to fail in a trial. Called in its process.
struct Plan
{
    std::function<bool()> prepare;  ///< before the act is made; false if the system doesn't let it be tried
    std::function<void()> start;    ///< right before run()
    std::function<long()> stop;     ///< right behind it; the result is how often something failed
    std::function<void(Findings&)> finish = {};  ///< when the act is gone
};

/// For a plan: this is where something fails in the process of a trial. Needs no memory.
void noteFailure();

/// Makes an act fail by `plan` in a process of its own, then lets it run `again` as often as that without a failure. The
/// fault is about the act's own state, and about a run that fails though nothing is wrong any more.
Findings tryAct(NamedAct const& act, Plan const& plan, int again = 1);

/// What a reader needs to know of a trial that went wrong; "" if nothing is wrong but what the caller knows better.
std::string describeEnd(Findings const& findings);

/// A folder in memory for the files of all trials, where the system has such a place: trials make a hundred thousand files.
class TrialFolder : public testing::Environment
{
public:
    void SetUp() override;
    void TearDown() override;

private:
    std::string _path;
};

/// How many descriptors this process holds, without one that it needs for the look.
int countOpenDescriptors();

}  // namespace VnTest
