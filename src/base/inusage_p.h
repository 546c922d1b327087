// Private to incommandline_p.h and inusageentries_p.h; implemented in inusagelinux.cpp and inusagewindows.cpp.
#pragma once

#include <base/inusage.h>

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Vn
{

class DbgBuildInfo;

/// What an InUsage was told.
class InUsageState
{
public:
    struct Word
    {
        std::string synopsis;  ///< "--graph", or "-perf LIST"
        std::string description;
        bool* isGiven;  ///< null for a word that stays in the arguments

        std::string_view getWord() const { return std::string_view(synopsis).substr(0, synopsis.find(' ')); }
    };

    struct Demand
    {
        InVariableBase const* variable;
        std::string what;
        bool (*isRight)(char const* text);
    };

    std::string summary;
    std::string operandNames;
    int leastOperands = 0;
    int mostOperands = 0;
    std::vector<Word> words;
    std::vector<Demand> demands;
    std::vector<std::string> notes;
};

/// Whether a setting is one of this library, which a program's user has no need to know of.
inline bool isOwnSetting(std::string_view handle)
{
    return handle.starts_with("Vn::");
}

/// How help and refusals name the program: the last part of its path, without Windows' suffix.
///
///     "/usr/bin/greeter", "bin\\greeter.exe"  ->  "greeter"
///     null, ""                                ->  "program"
///
std::string programNameOf(char const* path);

/// Prints the program and the libraries of the family in this process, one line each.
void printVersions(std::ostream& stream, std::string const& program);

namespace System
{
/// A library of the family that is loaded.
struct FamilyLibrary
{
    std::string fileName;             ///< without its folder
    DbgBuildInfo* (*getBuildInfo)();  ///< its function of that name
};

/// All that are loaded: the files called "libVN..." that export `getBuildInfo` themselves.
std::vector<FamilyLibrary> getFamilyLibraries();
}  // namespace System

}  // namespace Vn
