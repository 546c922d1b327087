#pragma once

// For tests on Linux only.
#include <filesystem>
#include <iterator>

namespace VnTest
{

/// How many descriptors this process holds.
inline int countDescriptors()
{
    const auto descriptors = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<int>(std::distance(begin(descriptors), end(descriptors)));
}

}  // namespace VnTest
