// The exceptions of InSingleton. A singleton is a template, so its name is run-time type information that the caller
// passes.
#include <base/insingletonex.h>

#include <base/exreasontext_p.h>

namespace Vn
{

/// The three classes differ in the second half of the message alone, so the base puts the message together.
InSingletonEx::InSingletonEx(char const* file, int line, char const* name, char const* state) : InEx(file, line)
{
    setReason(ExReasonText("%s %s.", ExReasonText::orEmpty(name), ExReasonText::orEmpty(state)).get());
}

/// Before the start; also what getInstance() throws after the stop.
InSingletonEx::ExNotInitialized::ExNotInitialized(char const* file, int line, char const* name)
    : std::runtime_error(""), InSingletonEx(file, line, name, "is not initialized")
{}

VN_EX_DEFINE_MEMBERS(InSingletonEx::ExNotInitialized);

/// The object that was passed in stays with the caller.
InSingletonEx::ExAlreadyInitialized::ExAlreadyInitialized(char const* file, int line, char const* name)
    : std::runtime_error(""), InSingletonEx(file, line, name, "has already been initialized")
{}

VN_EX_DEFINE_MEMBERS(InSingletonEx::ExAlreadyInitialized);

/// From initialize() and finalize() alone.
InSingletonEx::ExAlreadyDestroyed::ExAlreadyDestroyed(char const* file, int line, char const* name)
    : std::runtime_error(""), InSingletonEx(file, line, name, "has already been destroyed")
{}

VN_EX_DEFINE_MEMBERS(InSingletonEx::ExAlreadyDestroyed);

}  // namespace Vn
