// The tasks of docs/from-chrono-timecode.md with std::chrono: withchrono TASK.
#include "tasks.h"

#include <chrono>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <ratio>

using Frames = std::chrono::duration<std::int64_t, std::ratio<1001, 30000>>;
using Samples = std::chrono::duration<std::int64_t, std::ratio<1, 48000>>;

namespace
{
void position()
{
    const Frames minute(1800);
    std::cout << minute.count() << " frames are " << std::chrono::duration<double>(minute).count() << " s\n";
}

void compare()
{
    const Frames frame(945000000);
    const Samples sample(1513512000000);
    std::cout << std::boolalpha << (frame == sample) << ", " << (frame < sample + Samples(1)) << "\n";
}

void add()
{
    using Film = std::chrono::duration<std::int64_t, std::ratio<1, 25>>;
    using Video = std::chrono::duration<std::int64_t, std::ratio<1, 30>>;
    const auto sum = Film(25) + Video(30);
    std::cout << sum.count() << " at " << decltype(sum)::period::den << "\n";
}

void convert()
{
    using Thirtieths = std::chrono::duration<std::int64_t, std::ratio<1, 30>>;
    const Frames frames(1001);
    std::cout << std::chrono::floor<Thirtieths>(frames).count() << " "
              << std::chrono::ceil<Thirtieths>(frames).count() << "\n";
}

void year()
{
    using FloatSeconds = std::chrono::duration<float>;
    for (const int hours : {1, 24, 24 * 365}) {
        const Frames frame = std::chrono::floor<Frames>(std::chrono::hours(hours));
        const Frames again = std::chrono::round<Frames>(FloatSeconds(frame));
        std::cout << std::setw(4) << hours << " h: " << (again - frame).count()
                  << " frames off by way of a float\n";
    }
}

void due()
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const Clock::time_point due = start + std::chrono::duration_cast<Clock::duration>(Frames(90));
    std::cout << "frame 90 is due in " << std::chrono::duration<double>(due - start).count() << " s\n";
}
}  // namespace

int main(int argc, char** argv)
{
    return From::runTask({{"position", position},
                          {"compare", compare},
                          {"add", add},
                          {"convert", convert},
                          {"year", year},
                          {"due", due}},
                         argc, argv);
}
