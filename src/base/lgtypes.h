#pragma once

#include <base/exbase.h>

#include <cstdint>
#include <iosfwd>
#include <stdexcept>

namespace Vn
{

/// The levels of messages.
///
///     Vn::LgTypes::stringToLevel("Error") == Vn::LgTypes::RecoverableError
///
/// Thread-safe; holds no state.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgTypes
{
public:
    /// From the gravest down. The values stand in queue entries and index the tables of the logger.
    enum Level : std::int32_t
    {
        /// Our own mistake: "Internal Error". No threshold excludes it.
        InternalError = 0,
        /// The program can't go on: "Fatal Error". No threshold but `Profiling` excludes it.
        FatalError = 1,
        /// Something failed and the program goes on: "Error".
        RecoverableError = 2,
        /// Worth a look: "Warning". The threshold unless a program or the environment sets another.
        Warning = 3,
        /// For information: "Informational". Counts of lost messages are shown at this level.
        Informational = 4,
        /// For developers: "Tracing".
        Tracing = 5,
        /// Measurements: "Profiling". Stands apart: no threshold includes it, and it includes no other level.
        Profiling = 6
    };

    LgTypes() = delete;

    /// The level's word, as lines show it and as `VN_LOG_GROUPS` takes it; empty for a value that is no level.
    ///
    ///     RecoverableError  ->  "Error"
    ///     InternalError     ->  "Internal Error"
    ///     Level(7)          ->  ""
    static char const* levelToString(Level level);

    /// The level of such a word, which must match exactly, case and blanks included.
    ///
    ///     "Error"                  ->  RecoverableError
    ///     "error", "Errors", null  ->  throws LgEx::InvalidLevelString
    static Level stringToLevel(char const* text);
};

/// Base of the exceptions of message logging. Same threads and ownership as ExBase.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgEx : public ExBase
{
public:
    class InvalidLevelString;

protected:
    /// `file` and `line` say where the throw stands, as "src/base/lgtypes" and its line.
    LgEx(char const* file, int line);
};

/// A text that names no level.
class VN_BASE_EXPORT LgEx::InvalidLevelString : public std::runtime_error, public LgEx
{
public:
    /// The message is "Invalid level string specified: error" for the `text` "error"; null counts as empty.
    InvalidLevelString(char const* file, int line, char const* text);

    VN_EX_MEMBERS();
};

/// A named set of enabled levels, one for all libraries of the process.
///
///     Vn::LgMajorGroup& group = Vn::LgMajorGroup::getInstanceForName("Database");
///     group.setLogThreshold(Vn::LgTypes::Informational, false);
///
/// Groups can be found from the start of the package `logger` to its stop: take them in a package's hook, not in
/// static constructors. References stay valid until the process ends. From the stop on a group enables nothing, so
/// that a message of a late thread or of a static object's destructor is dropped.
///
/// Finding groups isn't locked. A set may be changed while other threads log; they see the change a little later.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgMajorGroup
{
public:
    /// Enables the levels of the default threshold as it is now. Such a group is in no registry.
    LgMajorGroup();

    /// Makes the registry of groups and applies `spec`, if not null, as parse() does. A registry that exists
    /// already keeps its groups. For LgLog::init().
    static void initialize(char const* spec);

    /// Ends all groups: none enables anything any more, and none is found. References stay valid. If the registry is
    /// made again, they refer to the group of that name again, once it has been asked for. For LgLog::destroy().
    static void finalize();

    /// The group of that name, made with the default threshold if there is none; null counts as the empty name. The
    /// same name always gives the same object. Throws ExInternalError while there is no registry.
    static LgMajorGroup& getInstanceForName(char const* name);

    /// Sets thresholds from pairs of a group's name and a level's word, each applied in turn:
    ///
    ///     "Database=Warning,UI=Informational"  ->  two thresholds
    ///     "UI=Profiling,UI=Warning"            ->  UI has Warning with Profiling added
    ///     "A=Warning,B=Loud,C=Tracing"         ->  prints "Invalid level string specified: Loud"; no group B
    ///     "A"                                  ->  as "A=": the empty word is no level
    ///     "A,B=Warning"                        ->  one group, named "A,B"
    ///
    /// Throws ExInternalError while there is no registry.
    static void parse(char const* spec);

    /// Prints all groups with their levels, ordered by name:
    ///
    ///     Major Groups:
    ///                     Database Tracing, Profiling
    ///
    /// The word "Tracing" stands for whatever a group enables beside profiling, even if that is fatal errors only.
    /// Throws ExInternalError while there is no registry.
    static void printAll(std::ostream& stream);

    /// Threshold of the groups that are made from now on; `Warning` at first.
    static LgTypes::Level getDefaultThreshold();

    /// Existing groups keep theirs. `InternalError` counts as `FatalError`; with `Profiling` a new group enables
    /// nothing else. Not while another thread makes a group.
    static void setDefaultThreshold(LgTypes::Level level);

    /// The levels that a threshold enables, as bits.
    ///
    ///     FatalError  ->  0xC0        Tracing    ->  0xFC
    ///     Warning     ->  0xF0        Profiling  ->  0x02
    ///     Level(7)    ->  0
    static std::uint32_t getLevelMask(LgTypes::Level level);

    /// The enabled levels, as bits: 0x80 for `InternalError` down to 0x04 for `Tracing`, and 0x02 for `Profiling`.
    std::uint32_t getLogLevels() const
    {
        // Relaxed: a mask stands for itself, and no other memory is read because of it.
        return __atomic_load_n(&_mask, __ATOMIC_RELAXED);
    }

    /// Enables the levels up to `level` and no others; `InternalError` counts as `FatalError`.
    ///
    ///     mask 0xF0, (Profiling, any)        ->  0xF2    // added; the threshold stays
    ///     mask 0xF2, (FatalError, false)     ->  0xC2    // profiling survives
    ///     mask 0xF2, (FatalError, true)      ->  0xC0
    ///     mask 0xF0, (InternalError, false)  ->  0xC0
    ///
    /// Any thread may call this.
    void setLogThreshold(LgTypes::Level level, bool replaceProfiling);

private:
    std::uint32_t _mask;

    static LgTypes::Level _defaultThreshold;
    static const std::uint32_t _levelMask[7];
};

/// What code logs through: a major group, and the word that stands before each message.
///
///     Vn::LgMinorGroup const group(Vn::LgMajorGroup::getInstanceForName("Database"), "Cache");
///     VN_LOG(group, Vn::LgTypes::Warning, "evicted " << count << " pages");    // "Cache evicted 17 pages"
///
/// Refers to its major group and to the text of its name, which must both outlive it. Thread-safe.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgMinorGroup
{
public:
    /// `name` is not copied; a string literal is the usual form.
    LgMinorGroup(LgMajorGroup const& major, char const* name) : _major(&major), _name(name) {}

    /// The word before each message.
    char const* getName() const { return _name; }

    /// Whether the major group enables `level`: what VN_LOG asks first. Takes no lock.
    bool isLevelEnabled(LgTypes::Level level) const
    {
        static constexpr std::uint32_t levelBit[8] = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};
        return (_major->getLogLevels() & levelBit[static_cast<std::uint32_t>(level) % 8]) != 0;
    }

private:
    LgMajorGroup const* _major;
    char const* _name;
};

}  // namespace Vn
