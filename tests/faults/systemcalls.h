#pragma once

#include "descriptors.h"

#include <sys/stat.h>

namespace VnTest
{

/// Lets a system call of this thread fail with `error`: the next one but `after`, and `times` in a row. Calls are known
/// by their names, "close" only for descriptors that are really closed, as the system does it whatever it reports.
void failCall(char const* name, int error, int after = 0, int times = 1);

/// Ends the failures for the calling process; those that it starts by copies go on with them.
void failOnlyInCopies();

/// Runs `action` in place of the failure, before the call is made: in the process that makes it.
void interruptCall(char const* name, void (*action)(), int after = 0);

/// Ends either, and tells how many calls have failed.
int stopFailingCalls();

/// Lets the system know none of the calls by which a process is started beside this one's memory and watched by its
/// descriptor, nor those that close many descriptors at once. Children of fork are on the same system.
void makeSystemOld(bool isOld);

/// For stand-ins: true if this call is to fail; the error is then the last one.
bool callFails(char const* name);

/// For stand-ins: true if the system is an old one; the last error is then that of an unknown call.
bool isUnknownCall();

/// Lets reading and writing move one byte at a time, or as many as they like.
void makeTransfersShort(bool areShort);

/// Lets listings tell no types, as those of some file systems.
void hideTypesOfEntries(bool areHidden);

/// Lets all file systems be of this type; 0 gives them back their own.
void setTypeOfFileSystems(long type);

/// Lets `change` have a say in what the system tells of a file; null ends that.
void changeStatusOfFiles(void (*change)(struct ::stat& status));

/// Gives the machine a name, cut and then without its end where it doesn't fit; null gives it back its own.
void nameMachine(char const* name);

/// Gives all users one name; null gives them back their own.
void nameAllUsers(char const* name);

/// How the system takes part in the copy of a file.
enum class SystemCopies
{
    asItCan,
    inSmallSteps,  ///< a thousand bytes in one call
    never,         ///< each such call is refused, so that all bytes are read and written
    byBlocks       ///< sharing the blocks of a file succeeds, on any file system; the positions stay, as there
};

void setSystemCopies(SystemCopies copies);

/// A failing call for as long as this lives.
class FailingCall
{
public:
    explicit FailingCall(char const* name, int error, int after = 0, int times = 1)
    {
        failCall(name, error, after, times);
    }
    ~FailingCall() { stopFailingCalls(); }
    FailingCall(FailingCall const&) = delete;
    FailingCall& operator=(FailingCall const&) = delete;
};

}  // namespace VnTest
