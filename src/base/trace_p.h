// Private to trace.cpp and traceoptions.cpp.
#pragma once

#include <base/relaxed_p.h>
#include <base/trace.h>

#include <cstdint>
#include <cstring>
#include <locale>
#include <map>
#include <ostream>

namespace Vn
{

/// What exceptions and registered files name as their source, for all sources of the trace.
inline constexpr char traceSourceName[] = "src/base/trace";

/// A level is found by the characters of its name, wherever they are stored.
struct TraceNameLess
{
    bool operator()(char const* a, char const* b) const { return std::strcmp(a, b) < 0; }
};

/// The process-wide state of the trace: what the options say, and all levels by name.
///
///     TraceOptions::get().parse("show=Palette,line");
///
/// One thread at a time changes it. What Trace::isEnabled() reads on any thread is stored by relaxed atomics: a level's
/// `_enabled`, and `_on` as Trace has it; all else is read only by lines of trace, and belongs to the thread that sets the
/// options.
/// Tests: tests/base/tracetest.cpp.
class TraceOptions
{
public:
    /// The one object, made by the first call and never destroyed: lines are traced until the last static object is
    /// gone.
    ///
    /// Not allowed to throw: a bad `VN_TRACE_OPTIONS` ends the program here, whichever static object comes first, with
    /// the exception's message. Thrown on, it would reach the loader, which shows no message.
    static TraceOptions& get() noexcept;

    /// @{
    /// What the options of these names say.
    bool isIndenting() const { return _indent; }
    bool isPrintingLevels() const { return _printLevels; }
    bool hasPrefix() const { return _prefix; }
    /// @}

    /// The level of that name, made if there is none.
    TraceLevel* findLevel(char const* name);

    /// Applies options in their order. Throws ExInternalError at the first one that is unknown.
    void parse(char const* options);

    /// @{
    /// The pieces of a line's prefix; each writes nothing unless its option asks for it. The texts are padded here and
    /// not by the stream, so that its width and its locale play no part.
    void printPid(std::ostream& stream) const;
    void printLocation(std::ostream& stream, char const* file, int line) const;
    /// @}

    /// All levels in the order of their names, with the files that use them.
    void printLevels(std::ostream& stream) const;

private:
    TraceOptions();

    enum class Token;
    struct TokenTable;
    class AllLevelsSwitch;

    void reset(AllLevelsSwitch& all);
    void applyAll(char const* options, AllLevelsSwitch& all);
    void apply(Token token, char const* value, AllLevelsSwitch& all);
    void applyUnprotected(Token token, char const* value, AllLevelsSwitch& all);
    void switchLevel(char const* name, bool enabled, AllLevelsSwitch& all);
    void switchTracing(bool on);
    char const* getShownName(char const* file) const;

    static constexpr std::int32_t defaultFileWidth = 20;

    bool _on = true;  ///< sites ask Trace::_isOn, which says the same
    bool _prefix = true;
    bool _line = false;
    bool _pid = false;
    bool _indent = true;
    std::int32_t _fnDirs = 0;  ///< folders shown before a file's name
    std::int32_t _fnWidth = defaultFileWidth;
    bool _printLevels = false;
    bool _writeProtect = false;
    std::int32_t _allLevels = 0;  ///< whether a new level is on: 1 on, 2 off, 0 off because no option said anything
    std::map<char const*, TraceLevel*, TraceNameLess> _levels;
    char _pidText[10];
};

/// Gives a stream its initial format for the life of this object, and then its former format back: what a client has set
/// on its stream does not change a line, and what a derived Trace sets in printPrefix() ends with the prefix.
class StreamFormatGuard
{
public:
    explicit StreamFormatGuard(std::ostream& stream)
        : _stream(stream),
          _flags(stream.flags(std::ios_base::dec)),
          _fill(stream.fill(' ')),
          _precision(stream.precision()),
          _locale(stream.getloc())
    {
        _stream.width(0);
    }
    ~StreamFormatGuard()
    {
        _stream.flags(_flags);
        _stream.fill(_fill);
        _stream.precision(_precision);
        if (_stream.getloc() != _locale)
            _stream.imbue(_locale);
    }

    StreamFormatGuard(StreamFormatGuard const&) = delete;
    StreamFormatGuard& operator=(StreamFormatGuard const&) = delete;

private:
    std::ostream& _stream;
    std::ios_base::fmtflags _flags;
    char _fill;
    std::streamsize _precision;
    std::locale _locale;
};

}  // namespace Vn
