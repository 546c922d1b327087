#include "profilelines.h"

#include "decimal.h"

#include <utility>

namespace vnlog
{
namespace
{
constexpr std::string_view blanks = " \t\r";

std::string_view trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The number that the whole text is; also "nan", a deviation that rounding has made imaginary.
std::optional<double> readNumber(std::string_view text)
{
    text = trim(text);
    double value = 0.0;
    const auto [end, error] = readDecimal(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

/// What stands behind a word at the start of the message, or behind its group's name.
std::optional<std::string_view> behindWord(std::string_view message, std::string_view word)
{
    if (message.substr(0, word.size()) == word)
        return message.substr(word.size());
    const std::size_t blank = message.find(' ');
    if (blank != message.npos && message.substr(blank + 1, word.size()) == word)
        return message.substr(blank + 1 + word.size());
    return std::nullopt;
}

double ProfileReport::*fieldOf(std::string_view label)
{
    const std::pair<std::string_view, double ProfileReport::*> fields[] = {
        {"Nb of cycles", &ProfileReport::cycles},  {"Total time", &ProfileReport::total},
        {"Average time", &ProfileReport::average}, {"Minimum time", &ProfileReport::minimum},
        {"Maximum time", &ProfileReport::maximum}, {"Standard dev", &ProfileReport::deviation},
    };
    for (auto const& [name, field] : fields)
        if (label == name)
            return field;
    return nullptr;
}
}  // namespace

bool ProfileReader::begin(std::string_view message)
{
    message = trim(message);
    if (const auto name = behindWord(message, "Profiler "); name && name->size() > 1 && name->back() == ':') {
        _report.emplace();
        if (*name == "Consolidator:")
            _report->kind = ProfileReport::Kind::Consolidator;
        else
            _report->name = name->substr(0, name->size() - 1);
        return true;
    }
    constexpr std::string_view behindName = ": Total = ";
    if (const auto timer = behindWord(message, "Timer ")) {
        const std::size_t end = timer->rfind(behindName);
        const auto total = end == timer->npos ? std::nullopt : readNumber(timer->substr(end + behindName.size()));
        if (!total)
            return false;
        _report.emplace();
        _report->kind = ProfileReport::Kind::Timer;
        _report->name = timer->substr(0, end);
        _report->total = *total;
        return true;
    }
    return false;
}

bool ProfileReader::addRow(std::string_view line)
{
    if (!_report || _report->kind == ProfileReport::Kind::Timer || line.empty() || line.front() != ' ')
        return false;
    const std::size_t colon = line.find(':');
    if (colon == line.npos)
        return false;
    double ProfileReport::*const field = fieldOf(trim(line.substr(0, colon)));
    const auto value = readNumber(line.substr(colon + 1));
    if (field == nullptr || !value)
        return false;
    _report.value().*field = *value;
    ++_report->rows;
    return true;
}

std::optional<ProfileReport> ProfileReader::end()
{
    std::optional<ProfileReport> report = std::exchange(_report, std::nullopt);
    if (report && report->kind != ProfileReport::Kind::Timer && report->rows == 0)
        return std::nullopt;
    return report;
}

}  // namespace vnlog
