#include <base/lgtypes.h>

#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/exreasontext_p.h>
#include <base/list.h>

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

constexpr char const* levelStrings[7] = {"Internal Error", "Fatal Error", "Error",    "Warning",
                                         "Informational",  "Tracing",     "Profiling"};

// How the two variables are set, for whoever looks for it here.
[[maybe_unused]] constexpr char groupsUsage[] =
    "setenv VN_LOG_GROUPS Database=Warning,UI=Informational,Radiosity=Profiling";
[[maybe_unused]] constexpr char thresholdUsage[] = "setenv VN_LOG_DEFAULT_LEVEL Tracing";

constexpr std::uint32_t profilingBit = 0x02;

struct NameOrder
{
    bool operator()(char const* a, char const* b) const { return std::strcmp(a, b) < 0; }
};

using Names = List<char*>;
using Groups = std::map<char const*, LgMajorGroup, NameOrder>;

Names* names = nullptr;    ///< in order of first use
Groups* groups = nullptr;  ///< its keys are the names, and owned copies

/// The groups that finalize() has ended. They are never destroyed, as minor groups still refer to them, and enable nothing.
Groups& endedGroups()
{
    static Groups& ended = *new Groups;
    return ended;
}

void checkRegistry(int line)
{
    if (groups == nullptr)
        throw ExInternalError(sourceName, line, "Log groups exist only while the logger is initialised.");
}

bool isLevel(LgTypes::Level level)
{
    return level >= LgTypes::InternalError && level <= LgTypes::Profiling;
}

LgTypes::Level atLeastFatal(LgTypes::Level level)
{
    return std::max(level, LgTypes::FatalError);
}

/// The group of that name from before an end, as if it were new; null if there is none. So references to it hold again.
LgMajorGroup* reviveGroup(char const* name)
{
    const auto found = endedGroups().find(name);
    if (found == endedGroups().end())
        return nullptr;
    names->push_back(const_cast<char*>(found->first));
    return &groups->insert(endedGroups().extract(found)).position->second;
}

/// Takes the name into list and map, or into neither.
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

/// The part of `rest` before `delimiter`, which is consumed with it.
std::string takeToken(char const*& rest, char delimiter)
{
    char const* const end = std::strchr(rest, delimiter);
    std::string token = end != nullptr ? std::string(rest, end) : std::string(rest);
    rest = end != nullptr ? end + 1 : rest + token.size();
    return token;
}

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

char const* LgTypes::levelToString(Level level)
{
    return isLevel(level) ? levelStrings[level] : "";
}

LgTypes::Level LgTypes::stringToLevel(char const* text)
{
    text = ExReasonText::orEmpty(text);
    for (int i = InternalError; i <= Profiling; ++i)
        if (std::strcmp(text, levelStrings[i]) == 0)
            return static_cast<Level>(i);
    throw LgEx::InvalidLevelString(sourceName, __LINE__, text);
}

LgEx::LgEx(char const* file, int line) : ExBase(file, line) {}

LgEx::InvalidLevelString::InvalidLevelString(char const* file, int line, char const* text)
    : std::runtime_error(""), LgEx(file, line)
{
    setReason(ExReasonText("%s%s", "Invalid level string specified: ", ExReasonText::orEmpty(text)).get());
}

VN_EX_DEFINE_MEMBERS(LgEx::InvalidLevelString);

LgTypes::Level LgMajorGroup::_defaultThreshold = LgTypes::Warning;
const std::uint32_t LgMajorGroup::_levelMask[7] = {0x80, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, profilingBit};

LgMajorGroup::LgMajorGroup() : _mask(_levelMask[_defaultThreshold]) {}

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

void LgMajorGroup::finalize()
{
    if (groups == nullptr)
        return;
    for (char const* name : *names)
        if (!groups->contains(name))  // for want of memory
            delete[] name;
    for (auto& [name, group] : *groups)
        std::atomic_ref(group._mask).store(0, std::memory_order_relaxed);
    endedGroups().merge(*groups);
    delete names;
    names = nullptr;
    delete groups;
    groups = nullptr;
}

LgMajorGroup& LgMajorGroup::getInstanceForName(char const* name)
{
    checkRegistry(__LINE__);
    name = ExReasonText::orEmpty(name);
    const auto found = groups->find(name);
    if (found != groups->end())
        return found->second;
    if (LgMajorGroup* const revived = reviveGroup(name)) {
        std::atomic_ref(revived->_mask).store(_levelMask[_defaultThreshold], std::memory_order_relaxed);
        return *revived;
    }
    return addGroup(name);
}

void LgMajorGroup::parse(char const* spec)
{
    checkRegistry(__LINE__);
    char const* rest = ExReasonText::orEmpty(spec);
    for (;;) {
        rest += std::strspn(rest, "=");
        if (*rest == '\0')
            return;
        const std::string name = takeToken(rest, '=');
        const std::string word = takeToken(rest, ',');
        try {
            const LgTypes::Level level = LgTypes::stringToLevel(word.c_str());
            getInstanceForName(name.c_str()).setLogThreshold(level, false);
        } catch (LgEx::InvalidLevelString const& failure) {
            std::cout << failure.getReason() << std::endl;
        }
    }
}

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

void LgMajorGroup::setDefaultThreshold(LgTypes::Level level)
{
    _defaultThreshold = std::min(atLeastFatal(level), LgTypes::Profiling);
}

std::uint32_t LgMajorGroup::getLevelMask(LgTypes::Level level)
{
    return isLevel(level) ? _levelMask[level] : 0;
}

void LgMajorGroup::setLogThreshold(LgTypes::Level level, bool replaceProfiling)
{
    if (level == LgTypes::Profiling) {
        std::atomic_ref(_mask).fetch_or(profilingBit, std::memory_order_relaxed);
        return;
    }
    const std::uint32_t kept = replaceProfiling ? 0 : getLogLevels() & profilingBit;
    std::atomic_ref(_mask).store(getLevelMask(atLeastFatal(level)) | kept, std::memory_order_relaxed);
}

}  // namespace Vn
