// The tasks of docs/from-chrono-timecode.md by hand, as many programs have it: withtimecode TASK.
#include "tasks.h"

#include <cstdint>
#include <cstdio>
#include <iomanip>
#include <iostream>

struct Timecode
{
    int hours, minutes, seconds, frames;
};

namespace
{
Timecode timecodeOf(std::int64_t frame)
{
    return {static_cast<int>(frame / 108000), static_cast<int>(frame / 1800 % 60),
            static_cast<int>(frame / 30 % 60), static_cast<int>(frame % 30)};
}

void position()
{
    const Timecode minute = timecodeOf(1800);
    std::printf("1800 frames are %02d:%02d:%02d:%02d\n", minute.hours, minute.minutes, minute.seconds,
                minute.frames);
}

void compare()
{
    const double frame = 945000000 / 29.97;
    const double sample = 1513512000000 / 48000.0;
    std::cout << std::boolalpha << (frame == sample) << ", " << (frame < sample + 1 / 48000.0) << "\n";
}

void year()
{
    for (const std::int64_t hours : {1, 24, 24 * 365}) {
        const std::int64_t frame = hours * 3600 * 30000 / 1001;
        const auto byRate = static_cast<std::int64_t>(static_cast<double>(hours * 3600) * 29.97);
        const std::int64_t byTimecode = hours * 3600 * 30;
        std::cout << std::setw(4) << hours << " h: " << byRate - frame << " frames off by 29.97, "
                  << byTimecode - frame << " by 30 to a second\n";
    }
}
}  // namespace

int main(int argc, char** argv)
{
    return From::runTask({{"position", position}, {"compare", compare}, {"year", year}}, argc, argv);
}
