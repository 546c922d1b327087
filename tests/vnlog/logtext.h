#pragma once

#include "child.h"
#include "tempfolder.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace VnLogTest
{

/// The banner of a program that started at that time of 2026-11-22.
inline std::string bannerAt(std::string const& time)
{
    return "===== Message Logger Startup =====\n===== Started on Sun Nov 22 " + time +
           " 2026\n\n===== Clock Frequency: 0.000000001\n";
}

constexpr char const* stopBanner = "===== Message Logger Stopped =====\n";

/// A line of so many milliseconds after the start.
inline std::string lineAt(std::uint64_t milliseconds, char const* level, std::string const& message,
                          unsigned thread = 0x1a2b)
{
    const std::uint64_t ticks = milliseconds * 1000000;
    char stamp[64];
    std::snprintf(stamp, sizeof stamp, "%010llu %010llu (0x%08x) ", static_cast<unsigned long long>(ticks >> 32),
                  static_cast<unsigned long long>(ticks & 0xffffffff), thread);
    return stamp + std::string(level) + ": " + message + "\n";
}

/// Runs vnlog in UTC, with nothing of the caller's settings, output as it is written.
inline VnTest::ChildRun runVnLog(std::vector<std::string> arguments)
{
    VnTest::Child child = VnTest::Child::program(VN_LOG_PROGRAM);
    child.arguments(std::move(arguments)).with("TZ", "UTC0");
    for (char const* name : {"VN_DEBUG_INITIALIZE", "VNLOG_ZONE", "VNLOG_WRITTEN_ZONE", "VNLOG_COLOUR",
                             "VNLOG_ASCII", "VNLOG_NO_PAGER", "PAGER", "LC_ALL", "LC_CTYPE", "LANG", "NO_COLOR"})
        child.without(name);
    return child.with("COLUMNS", "80").run();
}

}  // namespace VnLogTest
