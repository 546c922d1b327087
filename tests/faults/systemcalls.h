#pragma once

#include "descriptors.h"

namespace VnTest
{

/// Lets a system call of this thread fail with `error`: the next one but `after`, and `times` in a row. Calls are known
/// by their names, "close" only for descriptors that are really closed, as the system does it whatever it reports.
void failCall(char const* name, int error, int after = 0, int times = 1);

/// Ends that, and tells how many calls have failed.
int stopFailingCalls();

/// For stand-ins: true if this call is to fail; the error is then the last one.
bool callFails(char const* name);

/// Lets reading and writing move one byte at a time, or as many as they like.
void makeTransfersShort(bool areShort);

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
