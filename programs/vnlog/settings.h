#pragma once

#include "zone.h"

#include <base/incontextalias.h>
#include <base/ininit.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace VnInit
{
class vnlog
{};
}  // namespace VnInit

/// The program's settings.
template <>
class Vn::InInit<VnInit::vnlog> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};

namespace vnlog
{

/// The package that all settings belong to.
Vn::InPackageInit& getPackage();

/// A setting with an option, maybe a variable of the environment, and a default. A command makes its own when it is chosen, so
/// that help, completion and faults know those alone.
///
///     struct Settings { Setting<int> width{"width", "w:", "-w COLUMNS: ...", "VNLOG_WIDTH", "80"}; };
///     Settings& getSettings() { static Settings settings; return settings; }
///
template <class T>
class Setting
{
public:
    /// Without a variable if `environment` is null. `shown` stands in the help as the default, instead of `value`.
    Setting(char const* name, char const* key, char const* description, char const* environment, char const* value,
            char const* shown = nullptr)
        : _option(key, description),
          _default(value, shown != nullptr ? shown : value),
          _value(environment != nullptr ? Value(handleOf(name).c_str(), getPackage(), _option,
                                                _variable.emplace(environment, environment), _default)
                                        : Value(handleOf(name).c_str(), getPackage(), _option, _default))
    {}

    auto getValue() const { return _value.getValue(); }
    Vn::InVariable<T> const& getVariable() const { return _value; }

private:
    using Value = Vn::InVariable<T>;

    static std::string handleOf(char const* name) { return std::string("vnlog.") + name; }

    Vn::InContextAlias<Vn::InInitArg, 1> _option;
    Vn::InContextAlias<Vn::InInitDef, 0> _default;
    std::optional<Vn::InContextAlias<Vn::InInitEnv, 1>> _variable;
    Value _value;
};

/// The zones that the commands' options -z and -Z name.
struct ZoneSettings
{
    Setting<char const*> shown{"zone",
                               "z:", "-z ZONE: time zone of the dates: local, UTC, +05:30, or Europe/Berlin",
                               "VNLOG_ZONE", "local"};
    Setting<char const*> written{"zone.written", "Z:", "-Z ZONE: time zone of the machine that wrote the logs",
                                 "VNLOG_WRITTEN_ZONE", "local"};

    /// Makes the demands on both.
    void explain(Vn::InUsage& usage) const;

    Zone getShown() const { return Zone::parse(shown.getValue()); }
    Zone getWritten() const { return Zone::parse(written.getValue()); }
};

/// "red,green" -> "red" and "green". Empty words are left out.
std::vector<std::string> getWords(std::string const& list);

/// @{
/// Demands that several commands make on a value.
bool isOneOf(char const* text, std::initializer_list<char const*> words);
bool isDigitCount(char const* text);  ///< "0" to "9", as the digits behind a second
/// @}

/// Standard input if there is no operand. Throws WrongUse if that is a terminal.
std::vector<std::string> getNames(std::vector<std::string> const& operands);

}  // namespace vnlog
