#include "console.h"

#include <base/osenv.h>
#include <base/osterminal.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace vnlog
{
namespace
{
std::string getVariable(char const* name)
{
    char const* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isPlain(char c)
{
    return (c >= ' ' && c <= '~') || c == '\t';
}
}  // namespace

Output::Output()
{
    setBinary();
    _buffer.reserve(2 * blockSize);
}

Output::~Output()
{
    if (_hasPager)
        awaitPager();
}

void Output::flush()
{
    const bool isWritten = _isLeft || writeOutput(_buffer, _isLeft);
    _buffer.clear();
    if (!isWritten)
        throw std::runtime_error("cannot write to standard output: " + getReason());
    // Somebody who has left the pager has seen enough.
    _isLeft = _isLeft && _hasPager;
}

bool Output::startPager()
{
    std::string command = getVariable("PAGER");
    if (command.empty())
        command = usualPager;
    flush();
    _hasPager = hasPagers && command != "cat" && !command.empty() && openPager(command);
    return _hasPager;
}

void Output::close()
{
    flush();
    if (_hasPager)
        awaitPager();
    _hasPager = false;
}

void putShown(std::string& target, std::string_view text)
{
    while (!text.empty()) {
        const auto end = std::find_if_not(text.begin(), text.end(), isPlain);
        const std::size_t length = static_cast<std::size_t>(end - text.begin());
        target += text.substr(0, length);
        text.remove_prefix(length);
        // OsTerminal knows what passes, and sees a character as a whole; it would show a tab as text.
        const std::size_t rest = std::min(text.find('\t'), text.size());
        target += Vn::OsTerminal::shown(text.substr(0, rest));
        text.remove_prefix(rest);
    }
}

bool hasColours()
{
    return Vn::OsTerminal::isStandardOutput() && getVariable("NO_COLOR").empty() && getVariable("TERM") != "dumb";
}

}  // namespace vnlog
