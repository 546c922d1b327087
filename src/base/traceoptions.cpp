// The options of the trace, and the levels that they switch.
//
// TraceOptions::get() makes the one object, as a rule during static construction, when the first level registers: the
// defaults first, then VN_TRACE_OPTIONS. setOptions() of the program comes later and has the last word, unless
// "writeprotect" has frozen the options before.
//
// A text of options is split in place, in a copy, and each token takes effect before the next is looked at; so what stands
// before an unknown token has taken effect when that one throws. Only options for all levels wait until the text ends
// (AllLevelsSwitch): applied at once, a text of n of them would cost n walks through the levels. The last one counts, and
// levels that later options have switched by name keep what these say.
//
// A level may be named by an option before any code registers it. Both ways lead to findLevel(), so it is made once, with
// the setting that the option gave it.
#include <base/trace_p.h>

#include <base/arrayptr.h>
#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/exreasontext_p.h>
#include <base/inoptionparser.h>
#include <base/osenv_p.h>
#include <base/osutils.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

namespace Vn
{
namespace
{
constexpr char defaultOptions[] = "show=Main,show=Exceptions";

/// Not below 0: `fallback` stands for that. A number beyond an int is the largest int, which std::atoi leaves undefined.
int toCount(char const* text, int fallback)
{
    const long number = std::strtol(text, nullptr, 10);
    return number < 0 ? fallback : static_cast<int>(std::min(number, 0x7FFFFFFFL));
}

/// A copy of the text, the same one for equal texts. It is never freed, as the levels aren't; so it outlives the library that
/// `file` came from. Found without a copy: libraries that are loaded again and again register the same file each time.
char const* internFile(char const* file)
{
    static auto& files = *new std::set<std::string, std::less<>>;
    const auto found = files.find(std::string_view(file));
    return (found != files.end() ? found : files.emplace(file).first)->c_str();
}

/// `text` with blanks behind it up to `width`; a longer text stays whole.
std::string padRight(std::string text, std::size_t width)
{
    text.resize(std::max(text.size(), width), ' ');
    return text;
}
}  // namespace

/// In the order of the table below; getSubOption() returns the position of a token, and the position is the enumerator.
enum class TraceOptions::Token
{
    off,
    noLine,
    show,
    hide,
    noIndent,
    fnDirs,
    fnWidth,
    printLevels,
    line,
    indent,
    on,
    writeProtect,
    prefix,
    noPrefix,
    reset,
    pid,
    noPid,
    count  ///< no token: their number
};

/// The words of the tokens.
struct TraceOptions::TokenTable
{
    struct Row
    {
        Token token;
        char const* word;
    };

    static constexpr Row rows[] = {
        {Token::off, "off"},
        {Token::noLine, "noline"},
        {Token::show, "show"},
        {Token::hide, "hide"},
        {Token::noIndent, "noindent"},
        {Token::fnDirs, "fndirs"},
        {Token::fnWidth, "fnwidth"},
        {Token::printLevels, "printlevels"},
        {Token::line, "line"},
        {Token::indent, "indent"},
        {Token::on, "on"},
        {Token::writeProtect, "writeprotect"},
        {Token::prefix, "prefix"},
        {Token::noPrefix, "noprefix"},
        {Token::reset, "reset"},
        {Token::pid, "pid"},
        {Token::noPid, "nopid"},
    };

    static constexpr std::size_t size = std::size(rows);

    /// Whether each row stands at the place of its token, and no token is missing.
    static constexpr bool isInOrder()
    {
        for (std::size_t i = 0; i < size; ++i)
            if (rows[i].token != static_cast<Token>(i))
                return false;
        return size == static_cast<std::size_t>(Token::count);
    }

    /// The words alone, ended by a null, as the option parser takes them. Not const for its sake: it takes what getsubopt()
    /// does, and changes nothing.
    static char* const* getWords()
    {
        static constexpr auto words = [] {
            static_assert(isInOrder(), "the option parser's positions stand for tokens");
            std::array<char const*, size + 1> made{};
            for (std::size_t i = 0; i < size; ++i)
                made[i] = rows[i].word;
            return made;
        }();
        return const_cast<char* const*>(words.data());
    }
};

/// "show=all" or "hide=all" until the text that it stands in ends, be it by an exception; then it reaches the levels.
class TraceOptions::AllLevelsSwitch
{
public:
    explicit AllLevelsSwitch(TraceOptions& options) : _options(options) {}
    ~AllLevelsSwitch()
    {
        if (!_isSet)
            return;
        for (auto const& [name, level] : _options._levels)
            if (!_exceptions.contains(level))
                storeRelaxed(level->_enabled, _enabled);
    }

    AllLevelsSwitch(AllLevelsSwitch const&) = delete;
    AllLevelsSwitch& operator=(AllLevelsSwitch const&) = delete;

    /// Takes the place of an earlier one, and of what single levels were switched to since.
    void set(bool enabled)
    {
        _isSet = true;
        _enabled = enabled;
        _exceptions.clear();
    }

    /// `level` is switched by its name, which is later than what waits here.
    void except(TraceLevel const& level)
    {
        if (_isSet)
            _exceptions.insert(&level);
    }

private:
    TraceOptions& _options;
    bool _isSet = false;
    bool _enabled = false;
    std::set<TraceLevel const*> _exceptions;
};

/// Made at the first use and never destroyed: levels register and trace while static objects come and go, in any order.
TraceOptions& TraceOptions::get() noexcept
{
    static TraceOptions& options = *new TraceOptions;
    return options;
}

/// The environment comes after the defaults, and before any setOptions() of the program.
TraceOptions::TraceOptions()
{
    // At most nine digits; a longer number loses its last ones.
    const std::string text = std::to_string(OsUtils::getPid()).substr(0, sizeof _pidText - 1);
    std::memcpy(_pidText, text.c_str(), text.size() + 1);
    parse("reset");
    parse(System::getOwnVariable("VN_TRACE_OPTIONS"));
}

/// Intended: `_writeProtect` itself is not reset, so once set it stays for the rest of the run. Do not mend.
void TraceOptions::reset(AllLevelsSwitch& all)
{
    if (_writeProtect)
        return;
    switchTracing(true);
    _prefix = true;
    _line = false;
    _pid = false;
    _indent = true;
    _fnDirs = 0;
    _fnWidth = defaultFileWidth;
    _printLevels = false;
    all.set(false);
    _allLevels = 0;
    applyAll(defaultOptions, all);
}

/// Registration, "show", "hide" and printException() all come here. The map's key is the level's own copy of the name.
TraceLevel* TraceOptions::findLevel(char const* name)
{
    const auto found = _levels.find(name);
    if (found != _levels.end())
        return found->second;
    std::unique_ptr<TraceLevel> level(new TraceLevel(name));
    level->_enabled = _allLevels == 1;
    _levels.emplace(level->_name.get(), level.get());
    return level.release();
}

/// "show" and "hide" without a name have no effect.
void TraceOptions::switchLevel(char const* name, bool enabled, AllLevelsSwitch& all)
{
    if (name == nullptr)
        return;
    if (std::strcmp(name, "all") == 0) {
        all.set(enabled);
        _allLevels = enabled ? 1 : 2;
        return;
    }
    TraceLevel* const level = findLevel(name);
    all.except(*level);
    storeRelaxed(level->_enabled, enabled);
}

/// Relaxed: other threads see the switch a little later, and read nothing else because of it.
void TraceOptions::switchTracing(bool on)
{
    _on = on;
    storeRelaxed(Trace::_isOn, on);
}

/// The levels get what was said about all of them when the text has ended, also if a token has ended it too early.
void TraceOptions::parse(char const* options)
{
    AllLevelsSwitch all(*this);
    applyAll(options, all);
}

/// Works on a copy: the option parser writes zeros into the text.
void TraceOptions::applyAll(char const* options, AllLevelsSwitch& all)
{
    const ArrayPtr<char> copy = duplicateString(options);
    char* rest = copy.get();
    while (*rest != '\0') {
        char* value = nullptr;
        const int token = InOptionParser::getSubOption(&rest, TokenTable::getWords(), &value);
        if (token < 0)  // `value` is then the whole token
            throw ExInternalError(traceSourceName, __LINE__,
                                  ExReasonText("Unknown token \"%s\" in trace options.", value).get());
        apply(static_cast<Token>(token), value, all);
    }
}

/// These three act even after "writeprotect"; reset() looks at that itself. Nothing takes "writeprotect" back, so a user who
/// sets it in the environment has the last word over the program.
void TraceOptions::apply(Token token, char const* value, AllLevelsSwitch& all)
{
    switch (token) {
    case Token::printLevels:
        _printLevels = true;
        break;
    case Token::writeProtect:
        _writeProtect = true;
        break;
    case Token::reset:
        reset(all);
        break;
    default:
        if (!_writeProtect)
            applyUnprotected(token, value, all);
    }
}

/// Intended: without a value "fndirs" and "fnwidth" change nothing, and with a negative one they go to 0 and 20. Do not mend.
void TraceOptions::applyUnprotected(Token token, char const* value, AllLevelsSwitch& all)
{
    switch (token) {
    case Token::on:
    case Token::off:
        switchTracing(token == Token::on);
        break;
    case Token::line:
    case Token::noLine:
        _line = token == Token::line;
        break;
    case Token::indent:
    case Token::noIndent:
        _indent = token == Token::indent;
        break;
    case Token::prefix:
    case Token::noPrefix:
        _prefix = token == Token::prefix;
        break;
    case Token::pid:
    case Token::noPid:
        _pid = token == Token::pid;
        break;
    case Token::show:
    case Token::hide:
        switchLevel(value, token == Token::show, all);
        break;
    case Token::fnDirs:
        _fnDirs = value != nullptr ? toCount(value, 0) : _fnDirs;
        break;
    case Token::fnWidth:
        _fnWidth = value != nullptr ? toCount(value, defaultFileWidth) : _fnWidth;
        break;
    default:
        break;
    }
}

/// The last component of a path, and `_fnDirs` folders before it. Only "/" separates: the texts come from __FILE__.
///
///     _fnDirs 0   "src/base/trace.cpp"  ->  "trace.cpp"
///     _fnDirs 1   "src/base/trace.cpp"  ->  "base/trace.cpp"
///     _fnDirs 9   "src/base/trace.cpp"  ->  "src/base/trace.cpp"
char const* TraceOptions::getShownName(char const* file) const
{
    char const* name = file + std::strlen(file);
    // 64 bits: the option may be the largest int.
    for (std::int64_t separators = std::int64_t(_fnDirs) + 1; name != file; --name)
        if (name[-1] == '/' && --separators == 0)
            break;
    return name;
}

/// The number has at most nine digits, so a blank always follows it.
void TraceOptions::printPid(std::ostream& stream) const
{
    if (_pid)
        stream << padRight(_pidText, 10);
}

/// Intended: a name that is too wide loses its end, not its beginning. Do not mend.
///
///     fnwidth=10, line 7   ->  "palette.cp (   7) "
void TraceOptions::printLocation(std::ostream& stream, char const* file, int line) const
{
    if (!_line)
        return;
    const auto width = static_cast<std::size_t>(_fnWidth);
    const std::string number = std::to_string(line);
    stream << padRight(std::string(getShownName(file)).substr(0, width), width) << " ("
           << std::string(4 - std::min<std::size_t>(number.size(), 4), ' ') << number << ") ";
}

/// A name of more than 30 characters pushes its files to the right; the second and later files stand in column 33 whatever
/// the name.
void TraceOptions::printLevels(std::ostream& stream) const
{
    const StreamFormatGuard guard(stream);
    stream << "\nRegistered trace levels:\n\n";
    for (auto const& [name, level] : _levels) {
        stream << (loadRelaxed(level->_enabled) ? "X " : "  ") << std::left << std::setw(30) << name << ' ';
        bool isFirst = true;
        for (TraceLevel::File const& file : level->_files)
            for (std::size_t i = 0; i < file.times; ++i) {
                if (!isFirst)
                    stream << '\n' << std::string(33, ' ');
                stream << getShownName(file.name);
                isFirst = false;
            }
        stream << '\n';
    }
    stream << std::endl;
}

/// Off until somebody shows it; findLevel() looks what was said about all levels before.
TraceLevel::TraceLevel(char const* name) : _name(duplicateString(name)), _enabled(false) {}

/// A file that registers the same level several times in a row is stored once, with a count: a template's body registers for each
/// of its instances. What is printed has a line for each all the same.
void TraceLevel::addFile(char const* file)
{
    char const* const name = internFile(file);
    if (!_files.empty() && _files.back().name == name)
        ++_files.back().times;
    else
        _files.push_back({name, 1});
}

}  // namespace Vn
