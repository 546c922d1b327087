#include <base/exinternalerror.h>
#include <base/testgroup.h>
#include <base/trace.h>

#include "expectchild.h"
#include "expectthrow.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using Vn::TestGroup;
using Vn::Trace;
using VnTest::expectOutput;
using VnTest::expectThrow;

static_assert(std::is_abstract_v<TestGroup> && std::has_virtual_destructor_v<TestGroup>);
static_assert(sizeof(TestGroup) == 5 * sizeof(void*), "a table, three texts and two flags");

namespace
{
class Group : public TestGroup
{
public:
    using TestGroup::setDescription;
    using TestGroup::setGroupNameInArgs;
    using TestGroup::setName;
    using TestGroup::setPrintHeaders;
    using TestGroup::setUsage;

    explicit Group(char const* name) : TestGroup(name) {}
    Group() = default;

    void execute(int, char** const) override {}
};

/// A group that stays to the end of the process.
Group* make(char const* name = nullptr)
{
    static std::vector<Group*>& groups = *new std::vector<Group*>;
    groups.push_back(new Group(name));
    return groups.back();
}
}  // namespace

TEST(TestGroup, aGroupIsFoundByItsName)
{
    TestGroup* const first = make("found-first");
    TestGroup* const second = make("found-second");
    EXPECT_EQ(TestGroup::getInstance("found-first"), first);
    EXPECT_EQ(TestGroup::getInstance(std::string("found-second").c_str()), second);
    EXPECT_STREQ(first->getName(), "found-first");
    EXPECT_EQ(TestGroup::getInstance("Found-first"), nullptr);
    EXPECT_EQ(TestGroup::getInstance("found"), nullptr);
    EXPECT_EQ(TestGroup::getInstance(nullptr), nullptr);
}

TEST(TestGroup, unnamedGroupsAreManyAndNeverFound)
{
    EXPECT_EQ(make()->getName(), nullptr);
    EXPECT_EQ(make(nullptr)->getName(), nullptr);
    EXPECT_EQ(TestGroup::getInstance(""), nullptr);
    EXPECT_EQ(TestGroup::getInstance(nullptr), nullptr);
}

TEST(TestGroup, theNameIsCopied)
{
    std::string name = "copied-name";
    TestGroup* const group = make(name.c_str());
    name[0] = 'X';
    EXPECT_EQ(TestGroup::getInstance("copied-name"), group);
}

TEST(TestGroup, aSecondGroupOfANameIsRefused)
{
    make("twice");
    expectThrow<Vn::ExInternalError, std::runtime_error>([] { Group group("twice"); },
                                                         "Duplicate test group : \"twice\".");
    Group* const other = make("once");
    expectThrow<Vn::ExInternalError, std::runtime_error>([other] { other->setName("twice"); },
                                                         "Duplicate test group : \"twice\".");
    EXPECT_EQ(other->getName(), nullptr) << "the old name went first";
    EXPECT_EQ(TestGroup::getInstance("once"), nullptr);
}

TEST(TestGroup, aClearedNameIsFreeAgain)
{
    Group* const group = make("cleared");
    group->setName(nullptr);
    EXPECT_EQ(group->getName(), nullptr);
    EXPECT_EQ(TestGroup::getInstance("cleared"), nullptr);
    group->setName("cleared");
    EXPECT_EQ(TestGroup::getInstance("cleared"), group);
    group->setName("cleared");  // its own name, which went first
    EXPECT_STREQ(group->getName(), "cleared");
    group->setName(group->getName() + 1);
    EXPECT_STREQ(group->getName(), "leared");
}

TEST(TestGroup, headersAreOnAndTheNameInTheArgumentsIsOff)
{
    Group* const group = make("flags");
    EXPECT_TRUE(group->getPrintHeaders());
    EXPECT_FALSE(group->getGroupNameInArgs());
    group->setPrintHeaders(false);
    group->setGroupNameInArgs(true);
    EXPECT_FALSE(group->getPrintHeaders());
    EXPECT_TRUE(group->getGroupNameInArgs());
}

TEST(TestGroup, whatIsNotOverriddenDoesNothing)
{
    Group* const group = make("idle");
    group->prepare(0, nullptr);
    group->execute(0, nullptr);
    group->terminate();
    std::ostringstream stream;
    group->dump(stream);
    EXPECT_EQ(stream.str(), "");
    EXPECT_FALSE(TestGroup::isPixified());
}

VN_CHILD(listedGroups)
{
    static Group first("first"), untitled, third("third");
    first.setUsage("COUNT [SEED]");
    first.setDescription("Sorts.\nFast.");
    third.setUsage("gone");
    third.setUsage(nullptr);
    third.setDescription("old");
    third.setDescription("Merges.");
    TestGroup::printInstances();
    std::ostringstream levels;
    Trace::printLevels(levels);
    std::cout << "--\n" << levels.str();
    return 0;
}

TEST(TestGroup, listsAllGroupsAndTheLevels)
{
    const VnTest::ChildRun run = VnTest::Child("listedGroups").without("VN_TRACE_OPTIONS").run();
    const std::size_t end = run.out.find("--\n");
    ASSERT_NE(end, std::string::npos);
    const std::string levels = run.out.substr(end + 3);
    EXPECT_NE(levels.find("TestPerformer"), std::string::npos) << "registered before main";
    EXPECT_EQ(run.out.substr(0, end), "\nRegistered test groups:\n\n"
                                      "first COUNT [SEED]\nSorts.\nFast.\n\n"
                                      "<untitled> \n\n"
                                      "third \nMerges.\n\n" +
                                          levels + "\n");
    EXPECT_EQ(run.exitCode, 0);
}

VN_CHILD(headings)
{
    TestGroup::caseHeader("Case one");
    TestGroup::caseHeader(nullptr);
    TestGroup::log("text");
    TestGroup::log(nullptr);
    Trace::setOptions("noindent");
    TestGroup::caseHeader("a");
    TestGroup::log("b");
    Trace::setOptions("hide=Main");
    TestGroup::caseHeader("unseen");
    TestGroup::log("unseen");
    return 0;
}

TEST(TestGroup, headingsAreLinesOfTrace)
{
    expectOutput("headings", "| \n| ***** Case one *****\n| \n"
                             "| \n| *****  *****\n| \n"
                             "| \n| [ text ] \n| \n"
                             "| \n| [  ] \n| \n"
                             "***** a *****\n[ b ] \n");
}

VN_CHILD(headingPlaces)
{
    Trace::setOptions("line,fnwidth=14");
    TestGroup::log("text");
    return 0;
}

TEST(TestGroup, headingsTellTheirSource)
{
    const VnTest::ChildRun run = VnTest::Child("headingPlaces").without("VN_TRACE_OPTIONS").run();
    EXPECT_EQ(run.out.substr(0, 16), "testgroup      (");
}

VN_CHILD(duplicateGroup)
{
    static Group first("twin");
    try {
        static Group second("twin");
    } catch (Vn::ExInternalError const&) {
        std::cout << "refused\n";
    }
    return 0;
}

TEST(TestGroup, aRefusedNameIsTracedBeforeItIsThrown)
{
    const VnTest::ChildRun run = VnTest::Child("duplicateGroup").without("VN_TRACE_OPTIONS").run();
    EXPECT_EQ(run.out.substr(0, 34), "| Throwing exception [Exception Ty");
    EXPECT_NE(run.out.find("Duplicate test group : \"twin\".\nrefused\n"), std::string::npos) << run.out;
}
