// Environment variables as objects, and the registry that lists them.
//
// An object looks its variable up when it is made and at each refresh(); between these it holds a pointer into the
// environment, which is why its value may be out of date. The registry is a list in the order of construction, with a
// table of places beside it (listplaces_p.h), so that an object leaves in the same time however many there are.
#include <base/envvar.h>

#include <base/exreasontext_p.h>
#include <base/listplaces_p.h>
#include <base/osenv.h>
#include <base/wholenumber_p.h>

#include <cstdlib>
#include <iomanip>
#include <ostream>
#include <utility>

namespace Vn
{
namespace
{
constexpr int nameWidth = 25;  ///< of the name's column in a dump

char const* orNil(char const* text)
{
    return text != nullptr ? text : "NIL";
}
}  // namespace

/// Hidden from the header, which would have to include the table.
class EnvVarRegistry::Places : public ListPlaces<EnvVar*>
{};

EnvVarRegistry::EnvVarRegistry() : _places(new Places) {}

/// Entry by entry, as a copy needs a table of places of its own.
EnvVarRegistry::EnvVarRegistry(EnvVarRegistry const& other) : EnvVarRegistry()
{
    for (EnvVar* variable : other)
        push_back(variable);
}

/// Copy and swap: without memory the target stays as it was.
EnvVarRegistry& EnvVarRegistry::operator=(EnvVarRegistry const& other)
{
    EnvVarRegistry copy(other);
    _variables.swap(copy._variables);
    std::swap(*_places, *copy._places);
    return *this;
}

EnvVarRegistry::~EnvVarRegistry() = default;

void EnvVarRegistry::push_back(EnvVar* variable)
{
    _places->pushBack(_variables, variable);
}

void EnvVarRegistry::push_front(EnvVar* variable)
{
    _places->pushFront(_variables, variable);
}

/// Every entry equal to `variable`; none is no error.
void EnvVarRegistry::remove(EnvVar* variable)
{
    _places->remove(_variables, variable);
}

void EnvVarRegistry::clear()
{
    _places->clear(_variables);
}

EnvVar::EnvVar(char const* name, char const* defaultValue) : _name(name), _value(nullptr), _default(defaultValue)
{
    // Listed first: the registry then exists before the first static object is finished, and is there when it goes.
    getRegistry().push_back(this);
    _value = OsEnv::getVariable(_name);
}

/// Intended: the copy is not listed, although its destructor, like every other, leaves the registry. Do not mend.
EnvVar::EnvVar(EnvVar const& other) = default;

/// For a copy there is nothing to remove.
EnvVar::~EnvVar()
{
    getRegistry().remove(this);
}

/// The old pointer may be out of date by now and is not used.
void EnvVar::refresh()
{
    _value = OsEnv::getVariable(_name);
}

/// Intended: the looked-up text and not getValue(), so an unset variable shows "NIL" even if it has a default. Do not
/// mend.
std::ostream& EnvVar::dump(std::ostream& stream) const
{
    return dumpName(stream) << " value \"" << orNil(_value) << "\" default \"" << orNil(_default) << '"';
}

EnvVarRegistry& EnvVar::getRegistry()
{
    // Never destroyed: static owners may hold objects that were made after it, and these leave it when they go.
    static EnvVarRegistry& registry = *new EnvVarRegistry;
    return registry;
}

/// Changes the environment alone; objects see it at their next refresh().
void EnvVar::putEnv(char const* assignment)
{
    OsEnv::putVariable(assignment);
}

/// Right-aligned whatever the stream's state, which is as before afterwards. A longer name overflows its column.
std::ostream& EnvVar::dumpName(std::ostream& stream) const
{
    stream << "name ";
    const std::ios_base::fmtflags flags = stream.setf(std::ios_base::right, std::ios_base::adjustfield);
    stream << std::setw(nameWidth) << ExReasonText::orEmpty(_name);
    stream.flags(flags);
    return stream;
}

/// The constructors below call compute() themselves: a virtual call would not reach it from the base's constructor.
EnvIntVar::EnvIntVar(char const* name, int defaultValue)
    : EnvVar(name, nullptr), _intValue(0), _intDefault(defaultValue)
{
    compute();
}

/// The look-up first: compute() converts what it found.
void EnvIntVar::refresh()
{
    EnvVar::refresh();
    compute();
}

std::ostream& EnvIntVar::dump(std::ostream& stream) const
{
    return dumpName(stream) << " value " << _intValue << " default " << _intDefault;
}

/// Text that isn't a number is 0 and not the default, as atoi() would have it.
void EnvIntVar::compute()
{
    _intValue = getOwnValue() != nullptr ? wholeNumberOf<int>(getOwnValue()) : _intDefault;
}

EnvDoubleVar::EnvDoubleVar(char const* name, double defaultValue)
    : EnvVar(name, nullptr), _doubleValue(0.0), _doubleDefault(defaultValue)
{
    compute();
}

void EnvDoubleVar::refresh()
{
    EnvVar::refresh();
    compute();
}

std::ostream& EnvDoubleVar::dump(std::ostream& stream) const
{
    return dumpName(stream) << " value " << _doubleValue << " default " << _doubleDefault;
}

/// The same rule, with atof().
void EnvDoubleVar::compute()
{
    _doubleValue = getOwnValue() != nullptr ? std::atof(getOwnValue()) : _doubleDefault;
}

std::ostream& operator<<(std::ostream& stream, EnvVar const& variable)
{
    return variable.dump(stream);
}

/// Intended: a line end before each object and none behind the last. Do not mend.
std::ostream& operator<<(std::ostream& stream, EnvVarRegistry const& registry)
{
    for (EnvVar const* variable : registry) {
        stream << std::endl;
        variable->dump(stream);
    }
    return stream;
}

}  // namespace Vn
