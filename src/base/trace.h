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

/// A named switch for lines of trace. It is on or off and has no rank; LgTypes::Level is something else.
///
///     static Vn::TraceLevel& level = *Vn::Trace::registerLevel("Palette", __FILE__);
///
/// Made by Trace::registerLevel() or by an option that names it, and never destroyed, so a library that holds one may
/// be unloaded. Any thread may ask Trace::isEnabled() of it. Tests: tests/base/tracetest.cpp.
class VN_BASE_EXPORT TraceLevel
{
private:
    friend class Trace;
    friend class TraceOptions;

    explicit TraceLevel(char const* name);

    void addFile(char const* file);

    /// A file that registered this level, and how many times in a row: a library that is loaded again and again
    /// registers again and again. The text is never freed.
    struct File
    {
        char const* name;
        std::size_t times;
    };

    ArrayPtr<char> _name;
    bool _enabled;
    Vector<File> _files;  ///< in the order of registration
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
/// Options say which levels are on and what a line begins with (docs/logging.md). `VN_TRACE_OPTIONS` has the first
/// ones, and setOptions() adds to them. An object holds one depth of calls, and belongs to one thread unless its user
/// locks. Levels and options aren't locked: one thread sets them up; isEnabled() is thread-safe. Tests:
/// tests/base/tracetest.cpp.
class VN_BASE_EXPORT Trace
{
public:
    class Entry;

    /// Depth 0.
    Trace();

    /// Not while an Entry of this object exists.
    virtual ~Trace();

    /// Whether lines of that level are wanted: the level is on, and tracing as a whole is.
    static bool isEnabled(TraceLevel const& level)
    {
        // The level first: most sites belong to one that is off, and cost this one load. Relaxed: a switch stands for
        // itself, and no other memory is read because of it.
        return __atomic_load_n(&level._enabled, __ATOMIC_RELAXED) && __atomic_load_n(&_isOn, __ATOMIC_RELAXED);
    }

    /// The level of that name, made if there is none. A new one is off, unless an option has said "show=all".
    ///
    /// `file`, if not null, is listed as using the level, once for each call. Both texts are copied; a null name
    /// counts as empty. The first call of a program reads `VN_TRACE_OPTIONS`; a bad one ends the program.
    static TraceLevel* registerLevel(char const* name, char const* file);

    /// Applies options, each in turn; docs/logging.md has the list.
    ///
    ///     "show=Palette,line,fnwidth=30"  ->  the level Palette on, file and number in each line
    ///     "writeprotect,off"              ->  tracing stays on, for the rest of the run
    ///     "show"                          ->  nothing: the name is missing
    ///     "loud"                          ->  throws ExInternalError: Unknown token "loud" in trace options.
    ///     null, ""                        ->  nothing
    ///
    /// Tokens before an unknown one have taken effect.
    static void setOptions(char const* options);

    /// Prints all levels: an "X" before those that are on, the name, and the files that use it.
    static void printLevels(std::ostream& stream);

    /// Begins a line, with the prefix that the options ask for and "| "; the caller writes the text behind it.
    void log(std::ostream& stream, char const* file, int line);

    /// Writes a line from a format as std::printf takes it, without a line end; the text is cut to 1,023 characters.
    /// One thread at a time, across all objects: the text is formed in one buffer for the process.
    VN_BASE_PRINTF(5, 6)
    void print(std::ostream& stream, char const* file, int line, char const* format, ...);

    /// Hands "Throwing exception " and the detailed reason to the manager, if the level "Exceptions" is on, which it
    /// is unless an option says otherwise. Call it before the throw, with the throw's file and line.
    void printException(ExBase const& exception, char const* file, int line);

    /// The level "Main", which is on unless an option says otherwise.
    static TraceLevel* MainTraceLevel;

protected:
    /// Writes what a derived class wants each line to begin with; nothing here. The stream comes with its first
    /// settings, and what is set on it has no effect on the rest of the line.
    virtual void printPrefix(std::ostream& stream);

private:
    friend class TraceOptions;

    void entering(std::ostream& stream, char const* file, int line, char const* function);
    void exiting(std::ostream& stream, char const* file, int line, char const* function);
    void prefix(std::ostream& stream, char const* file, int line);
    void indent();
    void unindent();

    static bool _isOn;  ///< what the option "on" says, where sites reach it

    std::int32_t _depth;
};

/// Marks the entry into a function and the exit from it, if the level is on at the entry. VN_TRACE_ENTRY makes one.
///
/// A level that is switched while the object exists changes nothing for it, so each entry has its exit. Holds
/// pointers to all that it is given. Belongs to the thread that made it. Tests: tests/base/tracetest.cpp.
class VN_BASE_EXPORT Trace::Entry
{
public:
    /// Prints "+ FUNCTION" and increases the depth by 2; without indenting, ">>> FUNCTION". Null texts count as
    /// empty.
    Entry(Trace& trace, TraceLevel const& level, char const* function, char const* file, int line);

    /// Prints "/" and decreases the depth by 2; without indenting, "<<< FUNCTION".
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

/// Decides where lines of trace go, and whose depth they have: standard output and one depth for all threads, unless
/// a program makes a manager of its own. The one of the highest priority is the current one; among equals, the first.
///
///     class ThreadTraceManager : public Vn::TraceManager
///     {
///     public:
///         ThreadTraceManager() : TraceManager(1) {}
///         Vn::Trace& getTrace() override;    // of the calling thread: examples/threadlog
///     };
///
/// When the current manager is destroyed, the library's own takes over, not the one before. Nothing here owns a
/// manager. Making and destroying managers isn't locked; getInstance() is thread-safe. Tests:
/// tests/base/tracetest.cpp.
class VN_BASE_EXPORT TraceManager
{
public:
    /// The trace whose depth the calling thread's lines have. Called on any thread.
    virtual Trace& getTrace() = 0;

    /// Writes `text` and a line end to standard output; nothing for null or an empty text. Called on any thread.
    virtual void print(char const* text) const;

    /// If this is the current manager, the library's own takes over.
    virtual ~TraceManager();

    TraceManager(TraceManager const&) = delete;
    TraceManager& operator=(TraceManager const&) = delete;

    /// The current manager.
    static TraceManager& getInstance();

protected:
    /// Becomes the current manager if there is none, or if `priority` is above the current one's. The library's own
    /// has 0.
    explicit TraceManager(int priority);

private:
    friend class SingleTraceManager;

    /// The library's own manager, which registers once it is complete.
    TraceManager();

    static void registerManager(TraceManager* manager);
    static void unregisterManager(TraceManager* manager);

    std::int32_t _priority;

    static TraceManager* _manager;
    static bool _hasRegistered;
};

}  // namespace Vn

/// Traces a line: VN_TRACE(level, "takes " << count << " colours"). LEVEL is a TraceLevel.
///
/// Nothing of TEXT is evaluated while the level is off. TEXT may throw; the line is then not printed. Not in a signal
/// handler: the line allocates and takes locks.
#define VN_TRACE(LEVEL, TEXT)                                                                  \
    do {                                                                                       \
        if (Vn::Trace::isEnabled(LEVEL)) {                                                     \
            std::ostringstream vnTraceStream;                                                  \
            Vn::TraceManager::getInstance().getTrace().log(vnTraceStream, __FILE__, __LINE__); \
            vnTraceStream << TEXT << '\0';                                                     \
            Vn::TraceManager::getInstance().print(vnTraceStream.str().c_str());                \
        }                                                                                      \
    } while (false)

/// Traces entry and exit of the block that it stands in; FUNCTION is the text to show. FUNCTION must outlive the
/// block. Not in a signal handler.
#define VN_TRACE_ENTRY(LEVEL, FUNCTION)                                                                      \
    const Vn::Trace::Entry VN_TRACE_NAME(vnTraceEntry, __LINE__)(Vn::TraceManager::getInstance().getTrace(), \
                                                                 (LEVEL), (FUNCTION), __FILE__, __LINE__)

#define VN_TRACE_NAME(NAME, LINE) VN_TRACE_JOIN(NAME, LINE)
#define VN_TRACE_JOIN(NAME, LINE) NAME##LINE
