#pragma once

#include <base/exbase.h>

#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <stdexcept>

namespace Vn
{

/// The levels of messages.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgTypes
{
public:
    /// From the gravest down. `Profiling` stands apart: no threshold includes it, and it includes no other.
    enum Level : std::int32_t
    {
        InternalError = 0,
        FatalError = 1,
        RecoverableError = 2,
        Warning = 3,
        Informational = 4,
        Tracing = 5,
        Profiling = 6
    };

    LgTypes() = delete;

    /// The level's word: "Internal Error", "Fatal Error", "Error", "Warning", "Informational", "Tracing" or
    /// "Profiling". Empty for a value that is none.
    static char const* levelToString(Level level);

    /// The level of such a word, which must match to the letter. Throws LgEx::InvalidLevelString for any other text;
    /// null counts as empty.
    static Level stringToLevel(char const* text);
};

/// The exceptions of message logging.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgEx : public ExBase
{
public:
    class InvalidLevelString;

protected:
    LgEx(char const* file, int line);
};

/// A text that names no level.
class VN_BASE_EXPORT LgEx::InvalidLevelString : public std::runtime_error, public LgEx
{
public:
    InvalidLevelString(char const* file, int line, char const* text);

    VN_EX_MEMBERS();
};

/// A named set of enabled levels, one for all libraries of the process.
///
///     Vn::LgMajorGroup& group = Vn::LgMajorGroup::getInstanceForName("Database");
///     group.setLogThreshold(Vn::LgTypes::Informational, false);
///
/// Groups can be found from the start of the package `logger` to its stop: take them in a package's hook, not in static
/// constructors. References to them hold for ever; from the stop on a group enables nothing, so that a message of a late
/// thread or of a static object's destructor is dropped. Finding groups isn't locked. A set may be changed while other
/// threads log; they see it a little later.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgMajorGroup
{
public:
    /// Enables the levels of the default threshold, as it stands now.
    LgMajorGroup();

    /// Makes the registry of groups and applies `groups`, if not null, as parse() does. A registry that stands already
    /// keeps its groups.
    static void initialize(char const* groups);

    /// Ends all groups: none enables anything any more, and none is found. References stay; where the registry is made
    /// again, they are to the group of that name again, once it has been asked for.
    static void finalize();

    /// The group of that name, made if there is none; null counts as the empty name. Throws ExInternalError while
    /// there is no registry.
    static LgMajorGroup& getInstanceForName(char const* name);

    /// Sets thresholds from a text as "Database=Warning,UI=Informational": pairs of a group's name and a level's word.
    /// A pair with another word is told of on the standard output stream and passed over, and its group isn't made; a
    /// pair without a word counts as one with an empty word. Throws ExInternalError while there is no registry.
    static void parse(char const* spec);

    /// All groups with their levels, by name. The word "Tracing" stands for whatever a group enables beside profiling.
    static void printAll(std::ostream& stream);

    /// Threshold of the groups that are made from now on; `Warning` at first.
    static LgTypes::Level getDefaultThreshold();

    /// `InternalError` counts as `FatalError`: below that nothing can be switched off.
    static void setDefaultThreshold(LgTypes::Level level);

    /// The levels that a threshold enables, as bits: 0x80 for `InternalError` down to 0x02 for `Profiling`. 0 for a
    /// value that is no level.
    static std::uint32_t getLevelMask(LgTypes::Level level);

    /// The enabled levels, as such bits.
    std::uint32_t getLogLevels() const
    {
        // Relaxed: a mask stands for itself, nothing else is read on its account.
        return std::atomic_ref(const_cast<std::uint32_t&>(_mask)).load(std::memory_order_relaxed);
    }

    /// Enables the levels up to `level` and no others; `InternalError` counts as `FatalError`. `Profiling` is added to
    /// what there is; it stays under a later threshold unless `replaceProfiling` is true.
    void setLogThreshold(LgTypes::Level level, bool replaceProfiling);

private:
    std::uint32_t _mask;

    static LgTypes::Level _defaultThreshold;
    static const std::uint32_t _levelMask[7];
};

/// What code logs through: a major group, and the word that stands before each message.
///
///     Vn::LgMinorGroup const group(Vn::LgMajorGroup::getInstanceForName("Database"), "Cache");
///     VN_LOG(group, Vn::LgTypes::Warning, "evicted " << count << " pages");
///
/// Refers to its major group and to the text of its name, which must both outlive it. Any thread may use it.
/// Tests: tests/base/lgtypestest.cpp.
class VN_BASE_EXPORT LgMinorGroup
{
public:
    LgMinorGroup(LgMajorGroup const& major, char const* name) : _major(&major), _name(name) {}

    char const* getName() const { return _name; }

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
