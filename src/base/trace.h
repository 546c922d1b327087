#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/vector.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <sstream>

namespace Vn
{

class ExBase;

/// A named switch for lines of trace.
///
/// Made by Trace::registerLevel() or by an option that names it, and never destroyed, so a library that holds one may be
/// unloaded.
/// Tests: tests/base/tracetest.cpp.
class VN_BASE_EXPORT TraceLevel
{
private:
    friend class Trace;
    friend class TraceOptions;

    explicit TraceLevel(char const* name);

    void addFile(char const* file);

    ArrayPtr<char> _name;
    bool _enabled;

    // The files that registered this level, in order; the texts are kept by the options. A library that is loaded again and
    // again registers again and again, so what comes several times in a row stands here once, with its number beside it.
    Vector<char const*> _files;
    Vector<std::size_t> _repeats;

    std::uint64_t _switchedAt = 0;  ///< number of the option that switched this level last
};

/// A developer's view of a run: lines of named levels, indented by the depth of calls.
///
///     static Vn::TraceLevel& level = *Vn::Trace::registerLevel("Palette", __FILE__);
///
///     void load()
///     {
///         VN_TRACE_ENTRY(level, "load");
///         VN_TRACE(level, "takes " << count << " colours");
///     }
///
/// draws
///
///     + load
///       | takes 17 colours
///       /
///
/// Options say which levels are on and what a line begins with (docs/logging.md); VN_TRACE_OPTIONS holds them, and
/// setOptions() adds to them. An object holds the depth of calls. Levels and options aren't locked: they are set up by one
/// thread; isEnabled() is free for any.
/// Tests: tests/base/tracetest.cpp.
class VN_BASE_EXPORT Trace
{
public:
    class Entry;

    Trace();
    virtual ~Trace();

    /// Whether lines of that level are wanted.
    static bool isEnabled(TraceLevel const& level);

    /// The level of that name, off if it is new and no option says otherwise. `file` is listed as using it, as often as it
    /// registers the level. Both texts are copied. The first call of a program reads VN_TRACE_OPTIONS, and throws as setOptions() does.
    static TraceLevel* registerLevel(char const* name, char const* file);

    /// Applies options such as "show=Palette,line,fnwidth=30". Throws ExInternalError for a token that is none; those
    /// before it have taken effect. Null and the empty text do nothing.
    static void setOptions(char const* options);

    /// All levels: whether each is on, and the files that use it.
    static void printLevels(std::ostream& stream);

    /// Begins a line; the caller writes the text behind it.
    void log(std::ostream& stream, char const* file, int line);

    /// A line from a format as std::printf takes it, cut to 1,023 characters; without a line end. One thread at a time,
    /// across all objects.
#if defined(__MINGW32__)
    __attribute__((format(gnu_printf, 5, 6)))
#else
    __attribute__((format(printf, 5, 6)))
#endif
    void
    print(std::ostream& stream, char const* file, int line, char const* format, ...);

    /// Hands "Throwing exception " and the detailed reason to the manager, if the level "Exceptions" is on. To be called
    /// before a throw.
    void printException(ExBase const& exception, char const* file, int line);

    /// The level "Main", which is on unless an option says otherwise.
    static TraceLevel* MainTraceLevel;

protected:
    /// Writes what a derived class wants each line to begin with; nothing here. The stream comes with its first settings,
    /// and what is set on it has no effect on the rest of the line.
    virtual void printPrefix(std::ostream& stream);

private:
    void entering(std::ostream& stream, char const* file, int line, char const* function);
    void exiting(std::ostream& stream, char const* file, int line, char const* function);
    void prefix(std::ostream& stream, char const* file, int line);
    void indent();
    void unindent();

    std::int32_t _depth;
};

/// Marks the entry into a function and the exit from it, if the level is on at the entry. VN_TRACE_ENTRY makes one.
///
/// Holds pointers to all that it is given.
/// Tests: tests/base/tracetest.cpp.
class VN_BASE_EXPORT Trace::Entry
{
public:
    Entry(Trace& trace, TraceLevel const& level, char const* function, char const* file, int line);
    ~Entry();

    Entry(Entry const&) = delete;
    Entry& operator=(Entry const&) = delete;

private:
    Trace* _trace;
    char const* _file;
    std::int32_t _lineNumber;
    char const* _function;
    bool _active;
};

/// Where lines of trace go, and whose depth they have: the standard output stream and one depth for all threads, unless a
/// program makes a manager of its own. The one of the highest priority is the current one; of equal ones, the first.
///
///     class ThreadTraceManager : public Vn::TraceManager
///     {
///     public:
///         ThreadTraceManager() : TraceManager(1) {}
///         Vn::Trace& getTrace() override;    // of the calling thread: examples/threadlog
///     };
///
/// When the current manager is destroyed, the library's own takes over, not the one before. Making and destroying managers
/// isn't locked.
/// Tests: tests/base/tracetest.cpp.
class VN_BASE_EXPORT TraceManager
{
public:
    /// The trace whose depth the calling thread's lines have.
    virtual Trace& getTrace() = 0;

    /// Writes `text` and a line end; nothing for null or an empty text.
    virtual void print(char const* text) const;

    virtual ~TraceManager();

    TraceManager(TraceManager const&) = delete;
    TraceManager& operator=(TraceManager const&) = delete;

    /// The current manager.
    static TraceManager& getInstance();

protected:
    explicit TraceManager(int priority);

private:
    friend class SingleTraceManager;

    /// The library's own, which registers once it is complete.
    TraceManager();

    static void registerManager(TraceManager* manager);
    static void unregisterManager(TraceManager* manager);

    std::int32_t _priority;

    static TraceManager* _manager;
    static bool _hasRegistered;
};

}  // namespace Vn

/// Traces a line: VN_TRACE(level, "takes " << count << " colours"). LEVEL is a TraceLevel; nothing of TEXT is evaluated
/// while it is off.
#define VN_TRACE(LEVEL, TEXT)                                                                  \
    do {                                                                                       \
        if (Vn::Trace::isEnabled(LEVEL)) {                                                     \
            std::ostringstream vnTraceStream;                                                  \
            Vn::TraceManager::getInstance().getTrace().log(vnTraceStream, __FILE__, __LINE__); \
            vnTraceStream << TEXT << '\0';                                                     \
            Vn::TraceManager::getInstance().print(vnTraceStream.str().c_str());                \
        }                                                                                      \
    } while (false)

/// Traces entry and exit of the block that it stands in; FUNCTION is the text to show.
#define VN_TRACE_ENTRY(LEVEL, FUNCTION)                                                                      \
    const Vn::Trace::Entry VN_TRACE_NAME(vnTraceEntry, __LINE__)(Vn::TraceManager::getInstance().getTrace(), \
                                                                 (LEVEL), (FUNCTION), __FILE__, __LINE__)

#define VN_TRACE_NAME(NAME, LINE) VN_TRACE_JOIN(NAME, LINE)
#define VN_TRACE_JOIN(NAME, LINE) NAME##LINE
