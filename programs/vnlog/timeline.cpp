// The command timeline: reads all logs into a TimelineModel, and writes its columns into a page.
//
// The page is one file. It holds its style, its scripts and the compressed columns; a policy in its head forbids it to load anything.
// A page is written to its end or not at all: what a failure has left is removed.
#include "timeline.h"

#include "logsource.h"
#include "settings.h"
#include "timelinemodel.h"
#include "timelinepage.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace vnlog
{
namespace
{
struct TimelineSettings
{
    Setting<char const*> output{"timeline.output", "o:", "-o PAGE: the HTML file to write", nullptr, "", "none"};
    Setting<char const*> title{"timeline.title", "t:", "-t TITLE: title of the page",
                               nullptr,          "",   "names of the files"};
    ZoneSettings zones;
};

TimelineSettings& getSettings()
{
    static TimelineSettings settings;
    return settings;
}

std::string compress(std::string_view data)
{
    ::z_stream stream = {};
    if (::deflateInit(&stream, Z_BEST_COMPRESSION) != Z_OK)
        throw std::runtime_error("there is no memory to compress the page");
    std::string packed;
    char buffer[1 << 16];
    constexpr std::size_t longest = 1 << 30;  // zlib counts in 32 bits
    for (bool isLast = false; !isLast;) {
        const std::string_view part = data.substr(0, longest);
        data.remove_prefix(part.size());
        isLast = data.empty();
        // zlib doesn't change what it reads.
        stream.next_in = const_cast<Bytef*>(reinterpret_cast<Bytef const*>(part.data()));
        stream.avail_in = static_cast<uInt>(part.size());
        do {
            stream.next_out = reinterpret_cast<Bytef*>(buffer);
            stream.avail_out = sizeof buffer;
            ::deflate(&stream, isLast ? Z_FINISH : Z_NO_FLUSH);
            packed.append(buffer, sizeof buffer - stream.avail_out);
        } while (stream.avail_out == 0);
    }
    ::deflateEnd(&stream);
    return packed;
}

std::string asBase64(std::string_view data)
{
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((data.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < data.size(); at += 3) {
        unsigned bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 | (at + i < data.size() ? static_cast<unsigned char>(data[at + i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i)
            text += at + i <= data.size() ? digits[bits >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

std::string asHtml(std::string_view text)
{
    std::string html;
    for (const char c : text)
        if (c == '&')
            html += "&amp;";
        else if (c == '<')
            html += "&lt;";
        else
            html += c;
    return html;
}

std::string_view getLeaf(std::string_view name)
{
    const std::size_t separator = name.find_last_of("/\\");
    return separator == name.npos ? name : name.substr(separator + 1);
}

std::string getTitle(std::vector<std::string> const& names)
{
    if (*getSettings().title.getValue() != '\0')
        return getSettings().title.getValue();
    if (names.size() == 1 && names.front() == "-")
        return "standard input";
    constexpr std::size_t most = 3;
    std::string title;
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i)
        title += (i == 0 ? "" : ", ") + std::string(getLeaf(names[i]));
    return names.size() > most ? title + " and " + std::to_string(names.size() - most) + " more" : title;
}

void read(std::string const& name, TimelineModel& model)
{
    LogSource source(name, getSettings().zones.getWritten());
    if (InputFile::findIdentity(getSettings().output.getValue()) == source.getIdentity())
        throw std::runtime_error("'" + name + "' is the page as well; nothing has been written");
    const int number = model.addSource(name == "-" ? "standard input" : name);
    LogLine line;
    while (source.next(line))
        model.addLine(number, line, line.run < 0 ? nullptr : &source.getRun(line.run));
}

void write(std::string const& name, std::string const& page)
{
    errno = 0;
    std::ofstream file(name, std::ios::binary | std::ios::trunc);
    const bool isOpen = file.is_open();
    file.write(page.data(), static_cast<std::streamsize>(page.size()));
    file.close();
    if (file)
        return;
    const std::string reason = errno != 0 ? std::strerror(errno) : "the file system takes no more";
    // A device stays, of course.
    std::error_code ignored;
    if (isOpen && std::filesystem::is_regular_file(name, ignored))
        std::filesystem::remove(name, ignored);
    throw std::runtime_error("cannot write '" + name + "': " + reason);
}
}  // namespace

std::string makeTimelinePage(std::string_view title, std::string_view data)
{
    std::string page;
    for (std::string_view rest = pageFrame; !rest.empty();) {
        const std::size_t mark = rest.find('@');
        page += rest.substr(0, mark);
        if (mark == rest.npos)
            break;
        const std::size_t end = rest.find('@', mark + 1);
        const std::string_view name = rest.substr(mark + 1, end - mark - 1);
        if (name == "TITLE")
            page += asHtml(title);
        else if (name == "STYLE")
            page += pageStyle;
        else if (name == "DATA")
            page += asBase64(compress(data));
        else
            for (const std::string_view script : pageScripts)
                page += script;
        rest.remove_prefix(end + 1);
    }
    return page;
}

Vn::InUsage getTimelineUsage()
{
    TimelineSettings const& settings = getSettings();
    Vn::InUsage usage(
        "Makes an HTML page that shows threads as lanes, calls as nested bars, messages, losses and the reports of "
        "profilers along time.");
    usage.operands("[FILE]...");
    settings.zones.explain(usage);
    usage.note("Without a FILE, or where it is -, standard input is read. The page is one file, which loads "
               "nothing; a browser of "
               "2023 or later opens it. Calls are those that the trace has drawn: VN_TRACE_OPTIONS=show=LEVEL in "
               "the program's "
               "environment. A log without time stamps is shown by its lines' numbers.");
    return usage;
}

int runTimeline(std::vector<std::string> const& operands)
{
    const std::string output = getSettings().output.getValue();
    if (output.empty())
        throw WrongUse("which page? -o PAGE names it");
    const std::vector<std::string> names = getNames(operands);
    TimelineModel model(getSettings().zones.getShown());
    for (std::string const& name : names)
        read(name, model);
    model.finish();
    write(output, makeTimelinePage(getTitle(names), model.encode()));
    return success;
}

}  // namespace vnlog
