// The exceptions of start, stop and settings.
//
// All follow one pattern: the standard base comes first and gets an empty text, since what() returns ExBase's buffer;
// then the constructor forms the reason from a fixed text, and from names that are cut to `nameLimit`. The texts are
// part of the interface: programs compare them.
#include <base/inex.h>

#include <base/duplicatestring.h>
#include <base/exreasontext_p.h>

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace Vn
{
namespace
{
constexpr int nameLimit = 256;  ///< characters of a name that a message shows

/// A run-time type name as the source writes the type, or as it is if it can't be read.
std::string readableName(char const* typeName)
{
    int status = 0;  // not looked at: a null result says the same
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(typeName, nullptr, nullptr, &status),
                                                           &std::free);
    return name != nullptr ? name.get() : typeName;
}

/// What `InInit<` and `>` enclose.
std::string_view tagOf(std::string_view type)
{
    constexpr std::string_view start = "Vn::InInit<";
    if (!type.starts_with(start) || !type.ends_with('>'))
        return type;
    type.remove_prefix(start.size());
    type.remove_suffix(1);
    return type;
}
}  // namespace

InEx::InEx(char const* file, int line) : ExBase(file, line) {}

/// `package` comes from the compiler's type information and can be long: hence the limit.
InEx::ExPackageNotRegistered::ExPackageNotRegistered(char const* file, int line, char const* package)
    : std::runtime_error(""), InEx(file, line)
{
    setReason(
        ExReasonText("Init Package not registered: '%.*s'.", nameLimit, ExReasonText::orEmpty(package)).get());
}

/// The name stands in the reason, between its quotes: another field would change the layout of the class.
ArrayPtrRet<char> InEx::ExPackageNotRegistered::getPackageTag() const
{
    const std::string reason = getReason();
    const std::size_t first = reason.find('\'') + 1;
    const std::string typeName = reason.substr(first, reason.rfind('\'') - first);
    return duplicateString(std::string(tagOf(readableName(typeName.c_str()))).c_str());
}

VN_EX_DEFINE_MEMBERS(InEx::ExPackageNotRegistered);

/// Intended: this text has no full stop, unlike the others. Programs compare it; do not mend.
InEx::ExDependencyCycle::ExDependencyCycle(char const* file, int line) : std::logic_error(""), InEx(file, line)
{
    setReason("Init dependencies contain cycle(s)");
}

VN_EX_DEFINE_MEMBERS(InEx::ExDependencyCycle);

/// For hooks of client packages; the library doesn't throw it and gives it no special treatment.
InEx::ExPackageInitError::ExPackageInitError(char const* file, int line, char const* package)
    : std::runtime_error(""), InEx(file, line)
{
    setReason(ExReasonText("Init error in package: '%.*s'.", nameLimit, ExReasonText::orEmpty(package)).get());
}

VN_EX_DEFINE_MEMBERS(InEx::ExPackageInitError);

/// Intended: nothing in the library throws this class or ExDoubleInit, as the library allows what both name. They
/// stay part of the interface; do not mend.
InEx::ExRegAfterInit::ExRegAfterInit(char const* file, int line) : std::runtime_error(""), InEx(file, line)
{
    setReason("Package registered after initialize().");
}

VN_EX_DEFINE_MEMBERS(InEx::ExRegAfterInit);

/// From the constructor of a package, and so out of the loading of its library.
InEx::ExReinitWithoutGuard::ExReinitWithoutGuard(char const* file, int line)
    : std::runtime_error(""), InEx(file, line)
{
    setReason("Reinitialize without using the reinitialize guard.");
}

VN_EX_DEFINE_MEMBERS(InEx::ExReinitWithoutGuard);

/// For programs that must not start twice; the library's own initialize() may be called again.
InEx::ExDoubleInit::ExDoubleInit(char const* file, int line) : std::runtime_error(""), InEx(file, line)
{
    setReason("Multiple calls to initialize().");
}

VN_EX_DEFINE_MEMBERS(InEx::ExDoubleInit);

/// The check comes after overrides and arguments were freed; see InInitMgr::finalize().
InEx::ExFinaliseBeforeInit::ExFinaliseBeforeInit(char const* file, int line)
    : std::runtime_error(""), InEx(file, line)
{
    setReason("Call to finalize() before initialize().");
}

VN_EX_DEFINE_MEMBERS(InEx::ExFinaliseBeforeInit);

/// Also from a hook that stops everything while the stop is under way.
InEx::ExDoubleFinalise::ExDoubleFinalise(char const* file, int line) : std::runtime_error(""), InEx(file, line)
{
    setReason("Multiple calls to finalize().");
}

VN_EX_DEFINE_MEMBERS(InEx::ExDoubleFinalise);

/// From here on: settings. A handle is the programmer's name, hence no type information in these.
InEx::ExHandleAlreadyInUse::ExHandleAlreadyInUse(char const* file, int line, char const* handle)
    : std::runtime_error(""), InEx(file, line)
{
    setReason(ExReasonText("Trying to register an object with an already used handle: '%.*s'.", nameLimit,
                           ExReasonText::orEmpty(handle))
                  .get());
}

VN_EX_DEFINE_MEMBERS(InEx::ExHandleAlreadyInUse);

/// Before the start or after the stop. `name` is a handle or, for an alias, its description.
InEx::ExUninitializedObject::ExUninitializedObject(char const* file, int line, char const* name)
    : std::logic_error(""), InEx(file, line)
{
    setReason(ExReasonText("Trying to access an object that is not fully initialized: '%.*s'.", nameLimit,
                           ExReasonText::orEmpty(name))
                  .get());
}

VN_EX_DEFINE_MEMBERS(InEx::ExUninitializedObject);

/// Initialised, but without a value: an unset variable, or an option that was not given.
InEx::ExInvalidObject::ExInvalidObject(char const* file, int line, char const* description)
    : std::logic_error(""), InEx(file, line)
{
    setReason(ExReasonText("Trying to access an object that has an invalid value: '%.*s'.", nameLimit,
                           ExReasonText::orEmpty(description))
                  .get());
}

VN_EX_DEFINE_MEMBERS(InEx::ExInvalidObject);

/// For a second declaration; a clone shares its key.
InEx::ExContextAliasAlreadyDefined::ExContextAliasAlreadyDefined(char const* file, int line, char const* key)
    : std::logic_error(""), InEx(file, line)
{
    setReason(ExReasonText("Trying to re-create an already existing Context Alias: '%.*s'.", nameLimit,
                           ExReasonText::orEmpty(key))
                  .get());
}

VN_EX_DEFINE_MEMBERS(InEx::ExContextAliasAlreadyDefined);

/// An override that comes too late would never be read.
InEx::ExVariableAlreadyInitialized::ExVariableAlreadyInitialized(char const* file, int line, char const* handle)
    : std::logic_error(""), InEx(file, line)
{
    setReason(ExReasonText("Trying to override an InVariable that is already initialized: '%.*s'.", nameLimit,
                           ExReasonText::orEmpty(handle))
                  .get());
}

VN_EX_DEFINE_MEMBERS(InEx::ExVariableAlreadyInitialized);

/// Names description and key: the key alone is often a short text such as "0".
InEx::ExNoNewContextAliasAfterInit::ExNoNewContextAliasAfterInit(char const* file, int line,
                                                                 char const* description, char const* key)
    : std::logic_error(""), InEx(file, line)
{
    setReason(
        ExReasonText("Trying to do post initialization registration of context alias instance: '%.*s' (key: %.*s).",
                     nameLimit, ExReasonText::orEmpty(description), nameLimit, ExReasonText::orEmpty(key))
            .get());
}

VN_EX_DEFINE_MEMBERS(InEx::ExNoNewContextAliasAfterInit);

}  // namespace Vn
