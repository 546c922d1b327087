// Private to the sources of this library.
#pragma once

#include <base/lgtypes.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace Vn
{

/// What the settings say about messages of each level.
struct ThreadLogPolicy
{
    /// "Error,Warning", "all", "none": a bit for each level, in the order of their values. Nothing if a name is none.
    static std::optional<unsigned> parseLevels(std::string_view text);

    /// "Error" -> 2, "none" -> -1: up to which value a level counts. Nothing if the name is none.
    static std::optional<int> parseThreshold(std::string_view text);

    /// Both are false for what is no level: a site may log at any number that its program has cast to one.
    bool isWaiting(LgTypes::Level level) const { return isLevel(level) && (waiting >> level & 1u) != 0; }
    bool isUrgent(LgTypes::Level level) const { return isLevel(level) && level <= urgent; }

    unsigned waiting = 0x7;                  ///< a bit for each level whose messages wait for room
    int urgent = LgTypes::RecoverableError;  ///< highest value of a level whose messages are written at once
    std::chrono::milliseconds doze{1};       ///< how long others may rest

private:
    static bool isLevel(LgTypes::Level level) { return level >= 0 && level <= LgTypes::Profiling; }
};

}  // namespace Vn
