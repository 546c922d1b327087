#pragma once

namespace VnTest
{

/// In what way a system call fails.
enum class Manner
{
    refused,           ///< with an error that its manual page names
    refusedFromThere,  ///< and so do all later calls of its kind
    interrupted,       ///< by a signal, three times in a row
    cutShort,          ///< it moves half of what it was to move
    cutShortFromThere
};

/// Which call is to fail, and how.
struct CallPlan
{
    Manner manner;
    long index;  ///< of the call, among those that can fail in that way, from 0
    int choice;  ///< of the errors that its manual page names, from 0
};

/// What has come of it.
struct CallFindings
{
    bool isReached;     ///< there was such a call
    bool isLastChoice;  ///< no further error is named, or the call doesn't have as many
    int number;         ///< of the call
    int error;          ///< 0 for one that was cut short
    long hits;
};

/// Gets ready for trials. Null if the system, or the processor, lets system calls be failed; else the reason.
char const* whyNoFailingCalls();

/// In the process of a trial: from here on system calls of the C library and the loader can be failed. False if it can't be done.
bool catchCalls();

/// Lets calls of all threads fail, and of all processes that they make. The first one calls `onFailure` before.
void failCalls(CallPlan const& plan, void (*onFailure)());

/// Ends that, and tells how many have failed.
long stopFailingCallsOfAll();

/// Before a trial: the next findings are its own, also if it ends before its call.
void forgetCallFindings();

/// Of the last trial, also in the process that has made the one of the trial.
CallFindings getCallFindings();

/// "openat", or its number.
char const* getCallName(int number);

}  // namespace VnTest
