// A thousand flags of gflags, or none. Prints the nanoseconds from before the first one to the end of the parsing.
#include "repeat.h"

#include <gflags/gflags.h>

#include <chrono>
#include <cstdio>

namespace
{
const std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
}  // namespace

#define SETTING(NAME) DEFINE_int32(NAME, 17, "a setting");
REPEAT_COUNTED(SETTING)

int main(int argc, char** argv)
{
    gflags::ParseCommandLineFlags(&argc, &argv, true);
    const auto ended = std::chrono::steady_clock::now();
    std::printf("%f\n", std::chrono::duration<double, std::nano>(ended - begun).count());
    return 0;
}
