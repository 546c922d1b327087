#pragma once

#include "tempfolder.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace VnTest
{

/// A line of the log, taken apart.
struct LogLine
{
    std::uint64_t ticks;
    std::uint32_t threadId;
    std::string level;
    std::string text;

    /// Nothing if the line differs in one character from what a line of an event is. The text is all that follows.
    static std::optional<LogLine> parse(std::string const& line)
    {
        constexpr std::size_t prefix = 10 + 1 + 10 + 4 + 8 + 2;
        LogLine result{};
        std::uint64_t high = 0, low = 0, thread = 0;
        if (line.size() < prefix || line[10] != ' ' || line.compare(21, 4, " (0x") != 0 ||
            line.compare(33, 2, ") ") != 0)
            return {};
        if (!read(line.substr(0, 10), 10, high) || !read(line.substr(11, 10), 10, low) ||
            !read(line.substr(25, 8), 16, thread) || high > 0xFFFFFFFF || low > 0xFFFFFFFF)
            return {};
        result.ticks = high << 32 | low;
        result.threadId = static_cast<std::uint32_t>(thread);
        for (char const* level :
             {"Internal Error", "Fatal Error", "Error", "Warning", "Informational", "Tracing", "Profiling"}) {
            const std::string word = std::string(level) + ": ";
            if (line.compare(prefix, word.size(), word) != 0)
                continue;
            result.level = level;
            result.text = line.substr(prefix + word.size());
            return result;
        }
        return {};
    }

private:
    static bool read(std::string const& digits, unsigned base, std::uint64_t& value)
    {
        const std::string all = "0123456789abcdef";
        value = 0;
        for (const char digit : digits) {
            const std::size_t place = all.find(digit);
            if (place >= base)
                return false;
            value = value * base + place;
        }
        return true;
    }
};

/// The lines of a file of text; none if there is no file. The last one is whole.
inline std::vector<std::string> linesOf(std::string const& path)
{
    std::string content = contentOf(path);
    std::erase(content, '\r');
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < content.size();) {
        const std::size_t end = content.find('\n', begin);
        if (end == std::string::npos) {
            lines.push_back(content.substr(begin) + "(no line end)");
            break;
        }
        lines.push_back(content.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

}  // namespace VnTest
