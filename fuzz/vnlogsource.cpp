// Logs of any bytes, as vnlog reads them: each byte is in one line, lines are numbered, and times, runs, filters and dates take
// whatever they are given.
#include <filter.h>
#include <logsource.h>
#include <merge.h>
#include <timehistogram.h>
#include <timetext.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace
{
void check(bool condition)
{
    if (!condition)
        std::abort();
}

/// A file without a name, emptied for each input.
int getFile()
{
    static const int file = ::memfd_create("log", 0);
    check(file >= 0 && ::ftruncate(file, 0) == 0);
    return file;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    const std::string text(reinterpret_cast<char const*>(data), size);
    const int file = getFile();
    check(::pwrite(file, data, size, 0) == static_cast<::ssize_t>(size));
    vnlog::LogSource source("/proc/self/fd/" + std::to_string(file), vnlog::Zone());
    vnlog::LogLine line;
    vnlog::TimeText times(vnlog::Zone(), 9);
    vnlog::TimeHistogram histogram(20);
    std::string bytes, shown;
    std::uint64_t number = 0;
    while (source.next(line)) {
        bytes += line.raw;
        bytes += line.end;
        check(line.number == number + (line.isStart ? 1u : 0u));
        number = line.number;
        check(line.run < source.getRunCount());
        check(line.hasStamp ? line.level >= 0 && line.level < 7 : line.ticks == 0);
        check(line.group.size() + line.text.size() <= line.raw.size());
        if (auto const time = source.getTime(line)) {
            histogram.add(*time);
            times.putDate(shown, *time);
        }
        if (auto const time = source.getSinceStart(line)) {
            histogram.add(*time);
            times.putSeconds(shown, *time, false);
        }
    }
    check(bytes == text);
    static_cast<void>(vnlog::drawColumns(histogram.getCounts(), 3, true));
    static_cast<void>(vnlog::parseTime(text, vnlog::Zone()));
    static_cast<void>(vnlog::isLike(text.substr(0, 50), text.substr(text.size() / 2, 50)));
    if (text.find('\0') == std::string::npos)
        check(vnlog::parseOperand(text).name.size() <= text.size());
    return 0;
}
