// Groups and their registry, and the headings that groups print.
//
// Groups are static objects, so they enter the registry before `main`, in the order in which the linker placed them.
// The registry is made by the first of them and never destroyed, and a group doesn't leave it: groups live as long as
// the program, and a program that ends may still list them.
//
// Everything a group prints goes through trace at the level "Main" (testtrace_p.h), so trace options silence or
// redirect it; only the list of groups is printed whatever levels are on.
#include <base/testgroup.h>

#include <base/duplicatestring.h>
#include <base/exinternalerror.h>
#include <base/exreasontext_p.h>
#include <base/testtrace_p.h>
#include <base/vector.h>

#include <cstring>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/testgroup";

/// In the order of construction.
Vector<TestGroup*>& registry()
{
    static Vector<TestGroup*>& groups = *new Vector<TestGroup*>;
    return groups;
}

/// The copy comes first, as `with` may be the old text.
void replaceText(char*& text, char const* with)
{
    char* const copy = with != nullptr ? duplicateString(with).release() : nullptr;
    delete[] text;
    text = copy;
}

/// Without a prefix the empty lines don't show, as the trace output drops empty texts.
void traceHeading(int line, std::string const& text)
{
    traceTest(sourceName, line, "");
    traceTest(sourceName, line, text);
    traceTest(sourceName, line, "");
}

/// A null text counts as empty everywhere in this class.
std::string orEmpty(char const* text)
{
    return ExReasonText::orEmpty(text);
}
}  // namespace

bool TestGroup::_isPixified = false;

TestGroup::TestGroup(char const* name)
    : _name(nullptr), _usage(nullptr), _description(nullptr), _printHeaders(true), _groupNameInArgs(false)
{
    // First, as an exception after setName() would leave the name to nobody: the destructor doesn't run then.
    if (registry().size() == registry().capacity())
        registry().reserve(2 * registry().size() + 8);
    if (name != nullptr)
        setName(name);
    registry().push_back(this);
}

/// Intended: the registry keeps the address. Groups are static objects; do not mend.
TestGroup::~TestGroup()
{
    delete[] _name;
    delete[] _usage;
    delete[] _description;
}

/// What a group doesn't override does nothing.
void TestGroup::prepare(int, char** const) {}

void TestGroup::terminate() {}

void TestGroup::dump(std::ostream&) {}

char const* TestGroup::getName() const
{
    return _name;
}

bool TestGroup::getPrintHeaders() const
{
    return _printHeaders;
}

bool TestGroup::getGroupNameInArgs() const
{
    return _groupNameInArgs;
}

/// The old name goes first, so a group may take its own name anew. A duplicate is thrown during static construction
/// as a rule and so ends the program before `main`; the trace is where its developer sees why.
void TestGroup::setName(char const* name)
{
    const ArrayPtr<char> previous(_name);  // `name` may be this very text
    _name = nullptr;
    if (name == nullptr)
        return;
    // The group itself isn't in the registry yet, or has no name at the moment.
    if (getInstance(name) != nullptr) {
        const ExInternalError duplicate(sourceName, __LINE__,
                                        ExReasonText("Duplicate test group : \"%s\".", name).get());
        TraceManager::getInstance().getTrace().printException(duplicate, sourceName, __LINE__);
        throw duplicate;
    }
    _name = duplicateString(name).release();
}

/// Null clears both texts, and the list then shows none.
void TestGroup::setUsage(char const* usage)
{
    replaceText(_usage, usage);
}

void TestGroup::setDescription(char const* description)
{
    replaceText(_description, description);
}

void TestGroup::setPrintHeaders(bool printHeaders)
{
    _printHeaders = printHeaders;
}

void TestGroup::setGroupNameInArgs(bool groupNameInArgs)
{
    _groupNameInArgs = groupNameInArgs;
}

/// Linear: a program has tens of groups.
TestGroup* TestGroup::getInstance(char const* name)
{
    if (name == nullptr)
        return nullptr;
    for (TestGroup* group : registry()) {
        if (group->_name != nullptr && std::strcmp(group->_name, name) == 0)
            return group;
    }
    return nullptr;
}

/// One print for each group, as the trace output ends each with a line end.
void TestGroup::printInstances()
{
    TraceManager& manager = TraceManager::getInstance();
    manager.print("\nRegistered test groups:\n");
    for (TestGroup const* group : registry()) {
        std::string text = group->_name != nullptr ? group->_name : "<untitled>";
        text += " " + orEmpty(group->_usage) + "\n";
        if (group->_description != nullptr)
            text += orEmpty(group->_description) + "\n";
        manager.print(text.c_str());
    }
    // Last come the trace levels, since options for them are part of calling a test program.
    std::ostringstream levels;
    Trace::printLevels(levels);
    manager.print(levels.str().c_str());
}

/// For the parts of a group: each heading is a line of stars around the name.
void TestGroup::caseHeader(char const* name)
{
    traceHeading(__LINE__, "***** " + orEmpty(name) + " *****");
}

/// Null counts as empty.
void TestGroup::log(char const* text)
{
    traceHeading(__LINE__, "[ " + orEmpty(text) + " ] ");
}

/// Set by the driver once, from the program's name, before any group runs.
bool TestGroup::isPixified()
{
    return _isPixified;
}

void TestGroup::setIsPixified(bool isPixified)
{
    _isPixified = isPixified;
}

}  // namespace Vn
