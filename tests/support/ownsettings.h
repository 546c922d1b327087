#pragma once

#include <base/incontextalias.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace VnTest
{

/// What the diagnostics of the start tell of the library's own settings, of which there are two, each with a variable of
/// the environment and a default.
struct OwnSettings
{
    /// The lines of their defaults, and of their variables while neither is set, in a dump of all sources of that kind.
    /// Each source is there twice, as it was declared and as the setting keeps it.
    static std::string defaults(std::string const& value)
    {
        const std::string both = source("0", "Default value for validation suppression env var", value) +
                                 source("0", "Default value for enabling stamp check env var", value);
        return both + both;
    }
    static std::string variables()
    {
        const std::string both =
            source("VN_BUILDINFO_NO_VALIDATE", "Suppress validation of version numbers", "(uninitialized)") +
            source("VN_BUILDINFO_CHECK_STAMPS", "Enable validation of build stamps", "(uninitialized)");
        return both + both;
    }

    /// A dump with each run of sources in the order of their texts: the library has them by address, and where memory
    /// puts them is nobody's promise.
    static std::string inOrder(std::string const& dump)
    {
        std::istringstream lines(dump);
        std::vector<std::string> sources;
        std::string ordered;
        const auto flush = [&] {
            std::sort(sources.begin(), sources.end());
            for (std::string const& each : sources)
                ordered += each;
            sources.clear();
        };
        for (std::string line; std::getline(lines, line);) {
            if (line.compare(0, 17, "Key             :") == 0) {
                sources.push_back(line + "\n");
            } else if (!sources.empty() && line.compare(0, 5, "     ") == 0) {
                sources.back() += line + "\n";
            } else {
                flush();
                ordered += line + "\n";
            }
        }
        flush();
        return ordered;
    }

    /// How they choose their defaults.
    static std::string choices()
    {
        return choice("buildInfoNoValidate", "Default value for validation suppression env var") +
               choice("buildInfoCheckStamps", "Default value for enabling stamp check env var");
    }

private:
    static std::string source(std::string const& key, std::string const& description, std::string const& value)
    {
        return "Key             : " + key + "\n     Description: " + description + "\n     Value      : " + value +
               "\n";
    }

    static std::string choice(std::string const& name, std::string const& description)
    {
        return "----\nInitializing variable  : Vn::Tessola::debugging::" + name +
               "\n     With string       : 0\n     From context alias: " +
               typeid(Vn::InContextAlias<Vn::InInitDef, 0>).name() + "\n     Described as      : " + description +
               "\n----\n";
    }
};

}  // namespace VnTest
