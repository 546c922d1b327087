#pragma once

// For tests on Linux only.
#include <fcntl.h>
#include <unistd.h>

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

/// As a program that was started without standard input, output and error.
inline void closeStandardDescriptors()
{
    for (int file = 0; file < 3; ++file)
        ::close(file);
}

/// How many of the three are open.
inline int countStandardDescriptors()
{
    int count = 0;
    for (int file = 0; file < 3; ++file)
        count += ::fcntl(file, F_GETFD) != -1;
    return count;
}

}  // namespace VnTest
