// Levels, the groups of the process, and the text that sets their thresholds.
//
// A group is a mask of levels under a name. Sites read the mask on any thread without a lock; everything else here belongs to
// the one thread that starts and stops packages. The registry is a list of the names, in the order of their first use, and a
// map from name to group whose keys are those same texts. Both exist from initialize() to finalize().
//
// finalize() can't free the groups: minor groups of threads and of static objects still refer to them. So it empties their
// masks, which makes every site silent, and moves them to a second map that is never freed. If the logger starts again and a
// name is asked for again, its group moves back, and the references from before are good again.
#include <base/lgtypes.h>

#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/exreasontext_p.h>
#include <base/list.h>
#include <base/relaxed_p.h>

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <string>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/lgtypes";

/// Part of each line and of two environment variables, blanks and capitals included.
constexpr char const* levelStrings[7] = {"Internal Error", "Fatal Error", "Error",    "Warning",
                                         "Informational",  "Tracing",     "Profiling"};

// Intended: nothing prints these two lines. They show how the variables are set, to those who look into the library. Do not
// mend.
[[maybe_unused]] constexpr char groupsUsage[] =
    "setenv VN_LOG_GROUPS Database=Warning,UI=Informational,Radiosity=Profiling";
[[maybe_unused]] constexpr char thresholdUsage[] = "setenv VN_LOG_DEFAULT_LEVEL Tracing";

constexpr std::uint32_t profilingBit = 0x02;

/// Names are compared by their characters, as strcmp() does: no locale plays a part.
struct NameOrder
{
    bool operator()(char const* a, char const* b) const { return std::strcmp(a, b) < 0; }
};

// Two containers for one set: the list keeps the order of first use and owns the texts, the map finds groups by name.
using Names = List<char*>;
using Groups = std::map<char const*, LgMajorGroup, NameOrder>;

Names* names = nullptr;    ///< in order of first use
Groups* groups = nullptr;  ///< its keys are the texts of `names`, which it owns

/// The groups of a registry that finalize() has taken down. They enable nothing.
Groups& endedGroups()
{
    static Groups& ended = *new Groups;
    return ended;
}

/// `line` is that of the call, for the exception.
void checkRegistry(int line)
{
    if (groups == nullptr)
        throw ExInternalError(sourceName, line, "Log groups exist only while the logger is initialised.");
}

/// Whether the value is one of the seven.
bool isLevel(LgTypes::Level level)
{
    return level >= LgTypes::InternalError && level <= LgTypes::Profiling;
}

/// Intended: no group can be narrowed to internal errors alone. Do not mend.
LgTypes::Level atLeastFatal(LgTypes::Level level)
{
    return std::max(level, LgTypes::FatalError);
}

/// Moves the group of that name back from an earlier registry; null if there was none. Its mask is still empty.
LgMajorGroup* restoreGroup(char const* name)
{
    const auto found = endedGroups().find(name);
    if (found == endedGroups().end())
        return nullptr;
    names->push_back(const_cast<char*>(found->first));
    return &groups->insert(endedGroups().extract(found)).position->second;
}

/// Enters the name into list and map, or into neither if there is no memory: splice() does not allocate.
LgMajorGroup& addGroup(char const* name)
{
    ArrayPtr<char> copy = duplicateString(name);
    Names entry;
    entry.push_back(copy.get());
    LgMajorGroup& group = groups->try_emplace(copy.get()).first->second;
    names->splice(names->end(), entry);
    copy.release();
    return group;
}

struct Split
{
    std::string before;
    char const* behind;
};

/// A text before and behind its first delimiter; all of it and "" if it has none.
Split splitAtFirst(char const* text, char delimiter)
{
    char const* const end = std::strchr(text, delimiter);
    if (end == nullptr)
        return {text, text + std::strlen(text)};
    return {std::string(text, end), end + 1};
}

/// Intended: the first mask that has any bit in common with the group, not the mask that equals it. So every group that enables
/// anything but profiling shows "Tracing". Part of the interface; do not mend.
char const* getThresholdWord(std::uint32_t mask)
{
    for (int i = LgTypes::Tracing; i >= LgTypes::FatalError; --i) {
        const auto level = static_cast<LgTypes::Level>(i);
        if ((LgMajorGroup::getLevelMask(level) & mask) != 0)
            return LgTypes::levelToString(level);
    }
    return "";
}
}  // namespace

/// Values from outside the enumeration come from clients, and must not index the table.
char const* LgTypes::levelToString(Level level)
{
    return isLevel(level) ? levelStrings[level] : "";
}

/// An exact comparison: a word in another case is a mistake that the user should hear of.
LgTypes::Level LgTypes::stringToLevel(char const* text)
{
    text = ExReasonText::orEmpty(text);
    for (int i = InternalError; i <= Profiling; ++i)
        if (std::strcmp(text, levelStrings[i]) == 0)
            return static_cast<Level>(i);
    throw LgEx::InvalidLevelString(sourceName, __LINE__, text);
}

LgEx::LgEx(char const* file, int line) : ExBase(file, line) {}

/// The standard base holds an empty text; what() gives the reason that is set here.
LgEx::InvalidLevelString::InvalidLevelString(char const* file, int line, char const* text)
    : std::runtime_error(""), LgEx(file, line)
{
    setReason(ExReasonText("%s%s", "Invalid level string specified: ", ExReasonText::orEmpty(text)).get());
}

VN_EX_DEFINE_MEMBERS(LgEx::InvalidLevelString);

// Each threshold includes those above it; `Profiling` is one bit that includes no other and that no other includes.
LgTypes::Level LgMajorGroup::_defaultThreshold = LgTypes::Warning;
const std::uint32_t LgMajorGroup::_levelMask[7] = {0x80, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, profilingBit};

/// The threshold as it is at this moment: a later one leaves existing groups alone.
LgMajorGroup::LgMajorGroup() : _mask(_levelMask[_defaultThreshold]) {}

/// Both parts or neither: the list is kept back until the map has been made.
void LgMajorGroup::initialize(char const* spec)
{
    if (groups == nullptr) {
        auto newNames = std::make_unique<Names>();
        groups = new Groups;
        names = newNames.release();
    }
    if (spec != nullptr)
        parse(spec);
}

/// Relaxed: a site that still reads the old mask logs one message more, which finds no output.
void LgMajorGroup::finalize()
{
    if (groups == nullptr)
        return;
    for (char const* name : *names)
        if (!groups->contains(name))  // its group could not be made, so nobody refers to it
            delete[] name;
    for (auto& [name, group] : *groups)
        storeRelaxed(group._mask, 0);
    endedGroups().merge(*groups);
    delete names;
    names = nullptr;
    delete groups;
    groups = nullptr;
}

/// One object for each name, until the process ends. Without a lock: groups are made while packages start.
LgMajorGroup& LgMajorGroup::getInstanceForName(char const* name)
{
    checkRegistry(__LINE__);
    name = ExReasonText::orEmpty(name);
    const auto found = groups->find(name);
    if (found != groups->end())
        return found->second;
    if (LgMajorGroup* const restored = restoreGroup(name)) {
        storeRelaxed(restored->_mask, _levelMask[_defaultThreshold]);
        return *restored;
    }
    return addGroup(name);
}

/// Splits as strtok() with "=" and then with "," would: leading "=" are passed over, and a name may hold commas. The level
/// is looked up before the group, so a pair with a wrong level makes no group.
void LgMajorGroup::parse(char const* spec)
{
    checkRegistry(__LINE__);
    char const* rest = ExReasonText::orEmpty(spec);
    for (;;) {
        rest += std::strspn(rest, "=");
        if (*rest == '\0')
            return;
        const auto [name, pair] = splitAtFirst(rest, '=');
        const auto [word, others] = splitAtFirst(pair, ',');
        rest = others;
        try {
            const LgTypes::Level level = LgTypes::stringToLevel(word.c_str());
            getInstanceForName(name.c_str()).setLogThreshold(level, false);
        } catch (LgEx::InvalidLevelString const& failure) {
            std::cout << failure.getReason() << std::endl;
        }
    }
}

/// In the order of the names. The state of the client's stream is as before afterwards.
void LgMajorGroup::printAll(std::ostream& stream)
{
    checkRegistry(__LINE__);
    const std::ios_base::fmtflags flags = stream.flags();
    stream << "Major Groups:\n";
    for (auto const& [name, group] : *groups) {
        stream << std::right << std::setw(24) << name << ' ' << getThresholdWord(group.getLogLevels());
        if ((group.getLogLevels() & profilingBit) != 0)
            stream << ", " << LgTypes::levelToString(LgTypes::Profiling);
        stream << '\n';
    }
    stream.flags(flags);
}

LgTypes::Level LgMajorGroup::getDefaultThreshold()
{
    return _defaultThreshold;
}

/// Intended: `Profiling` is taken, and leaves new groups with that one bit. Do not mend.
void LgMajorGroup::setDefaultThreshold(LgTypes::Level level)
{
    _defaultThreshold = std::min(atLeastFatal(level), LgTypes::Profiling);
}

std::uint32_t LgMajorGroup::getLevelMask(LgTypes::Level level)
{
    return isLevel(level) ? _levelMask[level] : 0;
}

/// Relaxed: a mask stands for itself. Two threads that set thresholds at a time leave one of the two results.
void LgMajorGroup::setLogThreshold(LgTypes::Level level, bool replaceProfiling)
{
    if (level == LgTypes::Profiling) {
        setBitsRelaxed(_mask, profilingBit);
        return;
    }
    const std::uint32_t kept = replaceProfiling ? 0 : getLogLevels() & profilingBit;
    storeRelaxed(_mask, getLevelMask(atLeastFatal(level)) | kept);
}

}  // namespace Vn
