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

Vector<TestGroup*>& registry()
{
    static Vector<TestGroup*>& groups = *new Vector<TestGroup*>;
    return groups;
}

void replaceText(char*& text, char const* with)
{
    char* const copy = with != nullptr ? duplicateString(with).release() : nullptr;
    delete[] text;
    text = copy;
}

void traceHeading(int line, std::string const& text)
{
    traceTest(sourceName, line, "");
    traceTest(sourceName, line, text);
    traceTest(sourceName, line, "");
}

std::string orEmpty(char const* text)
{
    return ExReasonText::orEmpty(text);
}
}  // namespace

bool TestGroup::_isPixified = false;

TestGroup::TestGroup(char const* name)
    : _name(nullptr), _usage(nullptr), _description(nullptr), _printHeaders(true), _groupNameInArgs(false)
{
    if (registry().size() == registry().capacity())  // before a name is taken that nobody would free
        registry().reserve(2 * registry().size() + 8);
    if (name != nullptr)
        setName(name);
    registry().push_back(this);
}

TestGroup::~TestGroup()
{
    delete[] _name;
    delete[] _usage;
    delete[] _description;
}

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

void TestGroup::setName(char const* name)
{
    const ArrayPtr<char> previous(_name);  // `name` may be this very text
    _name = nullptr;
    if (name == nullptr)
        return;
    if (getInstance(name) != nullptr) {
        const ExInternalError duplicate(sourceName, __LINE__,
                                        ExReasonText("Duplicate test group : \"%s\".", name).get());
        TraceManager::getInstance().getTrace().printException(duplicate, sourceName, __LINE__);
        throw duplicate;
    }
    _name = duplicateString(name).release();
}

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
    std::ostringstream levels;
    Trace::printLevels(levels);
    manager.print(levels.str().c_str());
}

void TestGroup::caseHeader(char const* name)
{
    traceHeading(__LINE__, "***** " + orEmpty(name) + " *****");
}

void TestGroup::log(char const* text)
{
    traceHeading(__LINE__, "[ " + orEmpty(text) + " ] ");
}

bool TestGroup::isPixified()
{
    return _isPixified;
}

void TestGroup::setIsPixified(bool isPixified)
{
    _isPixified = isPixified;
}

}  // namespace Vn
