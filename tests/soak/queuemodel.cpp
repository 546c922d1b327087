// queuemodel MESSAGES [SEED]: a writer and a reader on one queue, in two threads, beside a model of what must come out.
//
// Whatever the queue accepts comes out once, whole and in order; nothing else appears; where it refuses, it tells so. How many
// were refused is not held against the model: the writer counts on while the reader looks.
#include <base/hwcounter.h>
#include <base/lgqueue.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{
/// Text of a message: all of it follows from its number.
std::string makeText(std::uint64_t number)
{
    std::minstd_rand random(static_cast<unsigned>(number % 2147483646 + 1));
    const unsigned kind = random() % 64;
    const std::size_t length = kind == 0 ? random() % 6000 : random() % 60;
    return std::to_string(number) + ' ' + std::string(length, static_cast<char>('a' + number % 26)) + '.';
}

Vn::LgTypes::Level levelOf(std::uint64_t number)
{
    return static_cast<Vn::LgTypes::Level>(number % 7);
}

/// What the writer tells the reader besides, by the number of messages that it has finished.
struct Story
{
    std::atomic<bool> isOver = false;
    std::vector<bool> accepted;  ///< read when the writer has ended
};

void produce(Vn::LgQueue& queue, std::uint64_t messages, unsigned seed, Story& story)
{
    std::mt19937 random(seed);
    for (std::uint64_t number = 0; number < messages; ++number) {
        const bool isAccepted = queue.reserveEntry(levelOf(number));
        story.accepted.push_back(isAccepted);
        if (isAccepted) {
            queue.getStream() << makeText(number).c_str() << Vn::ends;
            queue.addEntry();
        }
        // Now the reader is ahead, now the writer.
        if (random() % (isAccepted ? 4096 : 4) == 0)
            std::this_thread::yield();
    }
    story.isOver.store(true, std::memory_order_release);
}

struct Seen
{
    std::uint64_t number;
    bool isReduced;  ///< to "#", for want of room
};

struct Result
{
    std::vector<Seen> seen;
    std::uint64_t overflows = 0;
};

void check(bool holds, std::string const& what)
{
    if (!holds)
        throw std::runtime_error(what);
}

Result consume(Vn::LgQueue& queue, Story& story, unsigned seed)
{
    std::mt19937 random(seed + 1);
    Result result;
    std::vector<char> text(32768);
    std::uint64_t last = 0;
    constexpr std::uint64_t unknown = ~std::uint64_t(0);
    for (;;) {
        const bool isOver = story.isOver.load(std::memory_order_acquire);
        if (queue.isEmpty()) {
            if (isOver)
                return result;
            continue;
        }
        if (random() % 8192 == 0)
            std::this_thread::yield();  // the ring fills up meanwhile
        Vn::LgQueue::Entry const& entry = queue.readEntry();
        check(entry.getTimeStamp() >= last, "the stamps go back");
        last = entry.getTimeStamp();
        if (entry.isOverflowEntry()) {
            check(entry.getOverflowCount() > 0, "no loss told");
            ++result.overflows;
        } else {
            const Vn::LgTypes::Level level = entry.getLevel();
            queue.getStream() >> text.data();
            if (std::strcmp(text.data(), "#") == 0)
                result.seen.push_back({unknown, true});
            else {
                const std::uint64_t number = std::strtoull(text.data(), nullptr, 10);
                check(makeText(number) == text.data(), std::string("torn: ") + text.data());
                check(level == levelOf(number), "another one's level");
                result.seen.push_back({number, false});
            }
        }
        queue.removeEntry();
    }
}

/// All that was accepted, in its order, and nothing else.
std::uint64_t judge(Story const& story, Result const& result)
{
    auto seen = result.seen.begin();
    std::uint64_t refused = 0;
    for (std::uint64_t number = 0; number < story.accepted.size(); ++number) {
        if (!story.accepted[number]) {
            ++refused;
            continue;
        }
        check(seen != result.seen.end(), "lost: " + std::to_string(number));
        check(seen->isReduced || seen->number == number, "lost or doubled: " + std::to_string(number));
        ++seen;
    }
    check(seen == result.seen.end(), "more came out than went in");
    check(refused == 0 || result.overflows != 0, "nobody told of losses");
    return refused;
}
}  // namespace

int main(int argc, char** argv)
{
    const std::uint64_t messages = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1000000;
    const unsigned seed =
        argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : std::random_device{}();
    try {
        Vn::LgQueue queue;
        Story story;
        std::thread writer(produce, std::ref(queue), messages, seed, std::ref(story));
        Result result;
        std::string failure;
        try {
            result = consume(queue, story, seed);
        } catch (std::exception const& reason) {
            failure = reason.what();
        }
        writer.join();
        check(failure.empty(), failure);
        const std::uint64_t refused = judge(story, result);
        std::cout << messages << " messages, seed " << seed << ": " << messages - refused << " accepted, 0 lost, "
                  << refused << " refused and told\n";
    } catch (std::exception const& failure) {
        std::cout << "FAILED, seed " << seed << ": " << failure.what() << '\n';
        return 1;
    }
    return 0;
}
