// A thousand flags of Abseil, or none. Prints the nanoseconds from before the first one to the end of the parsing.
#include "repeat.h"

#include <absl/flags/flag.h>
#include <absl/flags/parse.h>

#include <chrono>
#include <cstdio>

namespace
{
const std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
}  // namespace

#define SETTING(NAME) ABSL_FLAG(int, NAME, 17, "a setting");
REPEAT_COUNTED(SETTING)

int main(int argc, char** argv)
{
    absl::ParseCommandLine(argc, argv);
    const auto ended = std::chrono::steady_clock::now();
    std::printf("%f\n", std::chrono::duration<double, std::nano>(ended - begun).count());
    return 0;
}
