#include <base/trace.h>

#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/exreasontext_p.h>
#include <base/inoptionparser.h>
#include <base/osenv_p.h>
#include <base/osutils.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <locale>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/trace";
constexpr char defaultOptions[] = "show=Main,show=Exceptions";
constexpr int defaultFileWidth = 20;

struct NameOrder
{
    bool operator()(char const* a, char const* b) const { return std::strcmp(a, b) < 0; }
};

enum class Token
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
    noPid
};

/// In the order of Token.
constexpr char const* tokens[] = {"off",     "noline",      "show",  "hide",   "noindent", "fndirs",
                                  "fnwidth", "printlevels", "line",  "indent", "on",       "writeprotect",
                                  "prefix",  "noprefix",    "reset", "pid",    "nopid",    nullptr};

// Relaxed: a switch that is flipped while other threads trace reaches them a little later, and nothing else is read on
// its account.
bool look(bool const& flag)
{
    return std::atomic_ref(const_cast<bool&>(flag)).load(std::memory_order_relaxed);
}

void flip(bool& flag, bool value)
{
    std::atomic_ref(flag).store(value, std::memory_order_relaxed);
}

/// Not below 0: `fallback` stands for that. What std::atoi can't hold is the largest number.
int toCount(char const* text, int fallback)
{
    const long number = std::strtol(text, nullptr, 10);
    return number < 0 ? fallback : static_cast<int>(std::min(number, 0x7FFFFFFFL));
}

/// At the left of a field that is no narrower than `width`. Formed without a stream, whose locale and formats are whoever's.
std::string inField(std::string text, std::size_t width)
{
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

/// Spaces and the text are the same whatever the stream was set to before; what is set meanwhile doesn't outlive this.
class PlainStream
{
public:
    explicit PlainStream(std::ostream& stream)
        : _stream(stream),
          _flags(stream.flags(std::ios_base::dec)),
          _fill(stream.fill(' ')),
          _precision(stream.precision()),
          _locale(stream.getloc())
    {
        _stream.width(0);
    }
    ~PlainStream()
    {
        _stream.flags(_flags);
        _stream.fill(_fill);
        _stream.precision(_precision);
        if (_stream.getloc() != _locale)
            _stream.imbue(_locale);
    }

    PlainStream(PlainStream const&) = delete;
    PlainStream& operator=(PlainStream const&) = delete;

private:
    std::ostream& _stream;
    std::ios_base::fmtflags _flags;
    char _fill;
    std::streamsize _precision;
    std::locale _locale;
};

}  // namespace

/// The process-wide state.
class TraceOptions
{
public:
    static TraceOptions& get() noexcept;

    bool isOn() const { return look(_on); }
    bool isIndenting() const { return _indent; }
    bool isPrintingLevels() const { return _printLevels; }

    TraceLevel* findLevel(char const* name);
    char const* keepFile(char const* file);
    void parse(char const* options);
    void printPid(std::ostream& stream) const;
    void printLocation(std::ostream& stream, char const* file, int line) const;
    bool hasPrefix() const { return _prefix; }
    void printLevels(std::ostream& stream) const;

private:
    TraceOptions();

    class Settling;

    void reset();
    void applyAll(char const* options);
    void apply(Token token, char const* value);
    void applyGated(Token token, char const* value);
    void switchLevel(char const* name, bool enabled);
    void switchAll(bool enabled);
    char const* reduce(char const* file) const;

    bool _on = true;
    bool _prefix = true;
    bool _line = false;
    bool _pid = false;
    bool _indent = true;
    std::int32_t _fnDirs = 0;
    std::int32_t _fnWidth = defaultFileWidth;
    bool _printLevels = false;
    bool _writeProtect = false;
    std::int32_t _allLevels = 0;  ///< what a new level is: 1 on, 2 off, 0 off for want of a rule
    std::map<char const*, TraceLevel*, NameOrder> _levels;
    char _pidText[10];
    std::set<std::string, std::less<>> _files;

    // An option for all levels reaches them when its text ends: each at once, a text of n would cost n walks.
    std::uint64_t _switches = 0;   ///< options that have switched levels
    std::uint64_t _allSwitch = 0;  ///< number of the last one for all, while it has yet to reach them
    bool _allOn = false;           ///< what that one says
};

/// Lets the options of a text reach all levels when it ends, be it by an exception.
class TraceOptions::Settling
{
public:
    explicit Settling(TraceOptions& options) : _options(options) {}
    ~Settling()
    {
        if (_options._allSwitch == 0)
            return;
        for (auto const& [name, level] : _options._levels)
            if (level->_switchedAt < _options._allSwitch)
                flip(level->_enabled, _options._allOn);
        _options._allSwitch = 0;
    }

    Settling(Settling const&) = delete;
    Settling& operator=(Settling const&) = delete;

private:
    TraceOptions& _options;
};

/// A bad VN_TRACE_OPTIONS ends the program here, whichever static object comes first: no loader can come between the
/// exception and its message.
TraceOptions& TraceOptions::get() noexcept
{
    // Never destroyed: lines are traced until the last static object is gone.
    static TraceOptions& options = *new TraceOptions;
    return options;
}

TraceOptions::TraceOptions()
{
    std::ostringstream pid;
    pid << OsUtils::getPid();
    const std::string text = pid.str().substr(0, sizeof _pidText - 1);
    std::memcpy(_pidText, text.c_str(), text.size() + 1);
    reset();
    parse(System::getOwnVariable("VN_TRACE_OPTIONS"));
}

void TraceOptions::reset()
{
    if (_writeProtect)
        return;
    flip(_on, true);
    _prefix = true;
    _line = false;
    _pid = false;
    _indent = true;
    _fnDirs = 0;
    _fnWidth = defaultFileWidth;
    _printLevels = false;
    switchAll(false);
    _allLevels = 0;
    applyAll(defaultOptions);
}

TraceLevel* TraceOptions::findLevel(char const* name)
{
    const auto found = _levels.find(name);
    if (found != _levels.end())
        return found->second;
    std::unique_ptr<TraceLevel> level(new TraceLevel(name));
    level->_enabled = _allLevels == 1;
    level->_switchedAt = ++_switches;
    _levels.emplace(level->_name.get(), level.get());
    return level.release();
}

/// The same text, which stays when the library that it came from goes.
char const* TraceOptions::keepFile(char const* file)
{
    const auto found = _files.find(std::string_view(file));
    return (found != _files.end() ? found : _files.emplace(file).first)->c_str();
}

void TraceOptions::switchLevel(char const* name, bool enabled)
{
    if (name == nullptr)
        return;
    if (std::strcmp(name, "all") != 0) {
        TraceLevel* const level = findLevel(name);
        flip(level->_enabled, enabled);
        level->_switchedAt = ++_switches;
        return;
    }
    switchAll(enabled);
    _allLevels = enabled ? 1 : 2;
}

void TraceOptions::switchAll(bool enabled)
{
    _allSwitch = ++_switches;
    _allOn = enabled;
}

void TraceOptions::parse(char const* options)
{
    const Settling settling(*this);
    applyAll(options);
}

void TraceOptions::applyAll(char const* options)
{
    const ArrayPtr<char> copy = duplicateString(options);
    char* rest = copy.get();
    while (*rest != '\0') {
        char* value = nullptr;
        const int token = InOptionParser::getSubOption(&rest, const_cast<char* const*>(tokens), &value);
        if (token < 0)
            throw ExInternalError(sourceName, __LINE__,
                                  ExReasonText("Unknown token \"%s\" in trace options.", value).get());
        apply(static_cast<Token>(token), value);
    }
}

void TraceOptions::apply(Token token, char const* value)
{
    switch (token) {
    case Token::printLevels:
        _printLevels = true;
        break;
    case Token::writeProtect:
        _writeProtect = true;
        break;
    case Token::reset:
        reset();
        break;
    default:
        if (!_writeProtect)
            applyGated(token, value);
    }
}

void TraceOptions::applyGated(Token token, char const* value)
{
    switch (token) {
    case Token::on:
    case Token::off:
        flip(_on, token == Token::on);
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
        switchLevel(value, token == Token::show);
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

/// The last component of a path, and `_fnDirs` folders before it.
char const* TraceOptions::reduce(char const* file) const
{
    char const* name = file + std::strlen(file);
    for (std::int64_t separators = std::int64_t(_fnDirs) + 1; name != file; --name)
        if (name[-1] == '/' && --separators == 0)
            break;
    return name;
}

void TraceOptions::printPid(std::ostream& stream) const
{
    if (_pid)
        stream << inField(_pidText, 10);
}

void TraceOptions::printLocation(std::ostream& stream, char const* file, int line) const
{
    if (!_line)
        return;
    const auto width = static_cast<std::size_t>(_fnWidth);
    const std::string number = std::to_string(line);
    stream << inField(std::string(reduce(file)).substr(0, width), width) << " ("
           << std::string(4 - std::min<std::size_t>(number.size(), 4), ' ') << number << ") ";
}

void TraceOptions::printLevels(std::ostream& stream) const
{
    const PlainStream plain(stream);
    stream << "\nRegistered trace levels:\n\n";
    for (auto const& [name, level] : _levels) {
        stream << (look(level->_enabled) ? "X " : "  ") << std::left << std::setw(30) << name << ' ';
        bool isFirst = true;
        for (std::size_t i = 0; i < level->_files.size(); ++i)
            for (std::size_t repeat = 0; repeat < level->_repeats[i]; ++repeat) {
                if (!isFirst)
                    stream << '\n' << std::string(33, ' ');
                stream << reduce(level->_files[i]);
                isFirst = false;
            }
        stream << '\n';
    }
    stream << std::endl;
}

TraceLevel::TraceLevel(char const* name) : _name(duplicateString(name)), _enabled(false) {}

/// `file` is one of those that the options keep, so its address stands for its text.
void TraceLevel::addFile(char const* file)
{
    if (!_files.empty() && _files.back() == file) {
        ++_repeats.back();
        return;
    }
    _repeats.reserve(_files.size() + 1);
    _files.push_back(file);
    _repeats.push_back(1);
}

namespace
{
/// Ends the program without memory, as TraceOptions::get() does for a bad VN_TRACE_OPTIONS.
TraceLevel* registerMainLevel() noexcept
{
    return Trace::registerLevel("Main", sourceName);
}
}  // namespace

TraceLevel* Trace::MainTraceLevel = registerMainLevel();

Trace::Trace() : _depth(0) {}

Trace::~Trace() = default;

void Trace::printPrefix(std::ostream&) {}

bool Trace::isEnabled(TraceLevel const& level)
{
    return TraceOptions::get().isOn() && look(level._enabled);
}

TraceLevel* Trace::registerLevel(char const* name, char const* file)
{
    TraceOptions& options = TraceOptions::get();
    TraceLevel* const level = options.findLevel(ExReasonText::orEmpty(name));
    if (file != nullptr)
        level->addFile(options.keepFile(file));
    return level;
}

void Trace::setOptions(char const* options)
{
    TraceOptions::get().parse(options);
}

void Trace::printLevels(std::ostream& stream)
{
    TraceOptions::get().printLevels(stream);
}

void Trace::log(std::ostream& stream, char const* file, int line)
{
    prefix(stream, file, line);
    if (TraceOptions::get().isIndenting())
        stream << "| ";
}

void Trace::print(std::ostream& stream, char const* file, int line, char const* format, ...)
{
    static char buffer[1024];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    log(stream, file, line);
    stream << buffer;
}

void Trace::printException(ExBase const& exception, char const* file, int line)
{
    static TraceLevel const& level = *registerLevel("Exceptions", sourceName);
    if (!isEnabled(level))
        return;
    std::ostringstream stream;
    log(stream, file, line);
    stream << "Throwing exception " << exception.getDetailedReason() << '\0';
    TraceManager::getInstance().print(stream.str().c_str());
}

void Trace::entering(std::ostream& stream, char const* file, int line, char const* function)
{
    prefix(stream, file, line);
    const bool isIndenting = TraceOptions::get().isIndenting();
    stream << (isIndenting ? "+ " : ">>> ") << function;
    if (isIndenting)
        indent();
}

void Trace::exiting(std::ostream& stream, char const* file, int line, char const* function)
{
    prefix(stream, file, line);
    if (TraceOptions::get().isIndenting()) {
        stream << '/';
        unindent();
    } else
        stream << "<<< " << function;
}

void Trace::prefix(std::ostream& stream, char const* file, int line)
{
    static std::atomic<bool> hasPrintedLevels = false;
    TraceOptions& options = TraceOptions::get();
    if (!hasPrintedLevels.exchange(true, std::memory_order_relaxed) && options.isPrintingLevels())
        printLevels(stream);
    const PlainStream plain(stream);
    options.printPid(stream);
    if (options.hasPrefix())
        printPrefix(stream);
    stream.width(0);  // the rest is plain text, for which no other setting counts
    options.printLocation(stream, ExReasonText::orEmpty(file), line);
    if (!options.isIndenting() || _depth < 1)
        return;
    stream << ' ';
    for (std::int32_t i = 1; i < _depth; ++i)
        stream << (i % 2 != 0 ? ' ' : '|');
}

void Trace::indent()
{
    _depth += 2;
}

void Trace::unindent()
{
    _depth -= 2;
}

Trace::Entry::Entry(Trace& trace, TraceLevel const& level, char const* function, char const* file, int line)
    : _trace(&trace), _file(file), _lineNumber(line), _function(function), _active(isEnabled(level))
{
    if (!_active)
        return;
    std::ostringstream stream;
    _trace->entering(stream, _file, _lineNumber, ExReasonText::orEmpty(_function));
    stream << '\0';
    TraceManager::getInstance().print(stream.str().c_str());
}

Trace::Entry::~Entry()
{
    if (!_active)
        return;
    std::ostringstream stream;
    _trace->exiting(stream, _file, _lineNumber, ExReasonText::orEmpty(_function));
    stream << '\0';
    TraceManager::getInstance().print(stream.str().c_str());
}

/// The library's own manager: one depth for all threads.
class SingleTraceManager : public TraceManager
{
public:
    /// Made by whoever comes first. Other threads look at the current manager without a lock, so this one registers only
    /// when it is complete.
    static SingleTraceManager& get()
    {
        static SingleTraceManager& manager = make();
        return manager;
    }

    Trace& getTrace() override { return _trace; }

private:
    static SingleTraceManager& make()
    {
        auto* const manager = new SingleTraceManager;
        registerManager(manager);
        return *manager;
    }

    Trace _trace;
};

TraceManager* TraceManager::_manager = nullptr;
bool TraceManager::_hasRegistered = false;

TraceManager::TraceManager() : _priority(0) {}

TraceManager::TraceManager(int priority) : _priority(priority)
{
    registerManager(this);
}

TraceManager::~TraceManager()
{
    unregisterManager(this);
}

void TraceManager::registerManager(TraceManager* manager)
{
    if (!_hasRegistered || _manager == nullptr || manager->_priority > _manager->_priority) {
        // Release, and acquire in getInstance(): without them another thread could find a manager and not yet what it
        // consists of.
        std::atomic_ref(_manager).store(manager, std::memory_order_release);
        _hasRegistered = true;
    }
}

void TraceManager::unregisterManager(TraceManager* manager)
{
    if (_manager == manager)
        _manager = &SingleTraceManager::get();
}

TraceManager& TraceManager::getInstance()
{
    const std::atomic_ref manager(_manager);
    if (manager.load(std::memory_order_acquire) == nullptr)
        SingleTraceManager::get();  // registers, as there is none
    return *manager.load(std::memory_order_acquire);
}

void TraceManager::print(char const* text) const
{
    if (text != nullptr && *text != '\0')
        std::cout << text << std::endl;
}

}  // namespace Vn
