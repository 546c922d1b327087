#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace VnBench
{

/// The messages that are measured: a constant text, a text with an integer, two integers and a double.
enum Message
{
    constantText,
    textWithInteger,
    twoIntegersAndDouble,
    messageCount
};

using Clock = std::chrono::steady_clock;

inline double nanoseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::nano>(time).count();
}

/// A logger in the contest. Its functions run whole bursts, so that each message is inlined as at a user's site.
struct Contestant
{
    std::string name;

    /// Logs `count` messages.
    std::function<void(Message, int count)> burst;

    /// Logs one message per element and stores its nanoseconds, those of one clock read included.
    std::function<void(Message, std::vector<double>& times)> each;

    /// Brings all messages to the file, outside what is measured.
    std::function<void()> drain;
};

/// Makes the two functions out of three callables that log a message each; they are given a number that changes.
template <class Constant, class Integer, class Mixed>
Contestant makeContestant(std::string name, Constant constant, Integer integer, Mixed mixed,
                          std::function<void()> drain)
{
    const auto withMessage = [=](Message message, auto const& run) {
        if (message == constantText)
            run(constant);
        else if (message == textWithInteger)
            run(integer);
        else
            run(mixed);
    };
    Contestant contestant;
    contestant.name = std::move(name);
    contestant.drain = std::move(drain);
    contestant.burst = [withMessage](Message message, int count) {
        withMessage(message, [count](auto const& log) {
            for (int i = 0; i < count; ++i)
                log(i);
        });
    };
    contestant.each = [withMessage](Message message, std::vector<double>& times) {
        withMessage(message, [&times](auto const& log) {
            int i = 0;
            for (double& time : times) {
                const Clock::time_point start = Clock::now();
                log(i++);
                time = nanoseconds(Clock::now() - start);
            }
        });
    };
    return contestant;
}

// Each logs to a file of its own in `folder`. "Flushing" loggers bring each message to the file before they return.
Contestant makeOurs(std::string const& folder);
Contestant makeSpdlog(std::string const& folder);
Contestant makeSpdlogFlushing(std::string const& folder);
Contestant makeSpdlogAsync(std::string const& folder);
Contestant makeGlog(std::string const& folder);
Contestant makeGlogFlushing(std::string const& folder);
Contestant makeBoostLog(std::string const& folder);
Contestant makeBoostLogFlushing(std::string const& folder);
Contestant makeBoostLogAsync(std::string const& folder);

/// Nanoseconds of our reader for each of `count` messages, one flushed line each.
double timeOurReader(int count);

/// Nanoseconds of a site whose level is disabled, and of the empty loop around it.
std::pair<double, double> timeDisabledLevel(int count);

}  // namespace VnBench
