#include <base/envvar.h>
#include <base/exinternalerror.h>
#include <base/osenv.h>

#include "expectchild.h"
#include "expectthrow.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using Vn::EnvDoubleVar;
using Vn::EnvIntVar;
using Vn::EnvVar;
using Vn::EnvVarRegistry;

static_assert(std::has_virtual_destructor_v<EnvVar>);
static_assert(std::is_base_of_v<EnvVar, EnvIntVar> && std::is_base_of_v<EnvVar, EnvDoubleVar>);

namespace
{
template <class Object>
std::string written(Object const& object)
{
    std::ostringstream stream;
    stream << object;
    return stream.str();
}

void set(char const* assignment)
{
    EnvVar::putEnv(assignment);
}

/// Leaves nothing set.
class EnvVarTest : public testing::Test
{
protected:
    ~EnvVarTest() override
    {
        set("VN_TEST_A=");
        set("VN_TEST_B=");
    }
};
}  // namespace

TEST_F(EnvVarTest, anUnsetOneHasItsDefault)
{
    const EnvVar variable("VN_TEST_A", "x");
    EXPECT_STREQ(variable.getName(), "VN_TEST_A");
    EXPECT_STREQ(variable.getValue(), "x");
    EXPECT_EQ(written(variable), "name                 VN_TEST_A value \"NIL\" default \"x\"");
}

TEST_F(EnvVarTest, anUnsetOneWithoutADefaultIsNull)
{
    const EnvVar variable("VN_TEST_A", nullptr);
    EXPECT_EQ(variable.getValue(), nullptr);
    EXPECT_EQ(written(variable), "name                 VN_TEST_A value \"NIL\" default \"NIL\"");
}

TEST_F(EnvVarTest, aSetOneHasItsOwnValue)
{
    set("VN_TEST_A=given text");
    const EnvVar variable("VN_TEST_A", "x");
    EXPECT_STREQ(variable.getValue(), "given text");
    EXPECT_EQ(variable.getValue(), Vn::OsEnv::getVariable("VN_TEST_A"));  // the environment's own text
    EXPECT_EQ(written(variable), "name                 VN_TEST_A value \"given text\" default \"x\"");
}

TEST_F(EnvVarTest, textsAreNotCopied)
{
    char name[] = "VN_TEST_A", byDefault[] = "x";
    const EnvVar variable(name, byDefault);
    EXPECT_EQ(variable.getName(), name);
    EXPECT_EQ(variable.getValue(), byDefault);
}

TEST_F(EnvVarTest, aChangeIsSeenAtTheNextRefresh)
{
    EnvVar text("VN_TEST_A", "x");
    EnvIntVar number("VN_TEST_A", 5);
    EnvDoubleVar real("VN_TEST_A", 2.5);
    set("VN_TEST_A=1");
    EXPECT_STREQ(text.getValue(), "x");
    EXPECT_EQ(number.getValue(), 5);
    EXPECT_EQ(real.getValue(), 2.5);
    for (EnvVar* variable : {&text, static_cast<EnvVar*>(&number), static_cast<EnvVar*>(&real)})
        variable->refresh();
    EXPECT_STREQ(text.getValue(), "1");
    EXPECT_EQ(number.getValue(), 1);
    EXPECT_EQ(real.getValue(), 1.0);
    set("VN_TEST_A=");
    EXPECT_EQ(number.getValue(), 1);
    for (EnvVar* variable : {&text, static_cast<EnvVar*>(&number), static_cast<EnvVar*>(&real)})
        variable->refresh();
    EXPECT_STREQ(text.getValue(), "x");
    EXPECT_EQ(number.getValue(), 5);
    EXPECT_EQ(real.getValue(), 2.5);
}

TEST_F(EnvVarTest, whatIsNoNumberIs0AndNotTheDefault)
{
    const struct
    {
        char const* text;
        int number;
        double real;
    } table[] = {
        {"VN_TEST_A=abc", 0, 0.0},
        {"VN_TEST_A=12abc", 12, 12.0},
        {"VN_TEST_A= -7", -7, -7.0},
        {"VN_TEST_A=1.75", 1, 1.75},
        {"VN_TEST_A=1e3", 1, 1000.0},
        {"VN_TEST_A=+3", 3, 3.0},
        {"VN_TEST_A=-", 0, 0.0},
        {"VN_TEST_A=010", 10, 10.0},
        // What an int doesn't hold is the nearest that it does.
        {"VN_TEST_A=2147483647", 2147483647, 2147483647.0},
        {"VN_TEST_A=2147483648", 2147483647, 2147483648.0},
        {"VN_TEST_A=-2147483649", -2147483647 - 1, -2147483649.0},
        {"VN_TEST_A=99999999999999999999", 2147483647, 1e20},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.text);
        set(row.text);
        EXPECT_EQ(EnvIntVar("VN_TEST_A", 5).getValue(), row.number);
        EXPECT_EQ(EnvDoubleVar("VN_TEST_A", 5.5).getValue(), row.real);
    }
    set("VN_TEST_A=");
    EXPECT_EQ(EnvIntVar("VN_TEST_A", 5).getValue(), 5);
    EXPECT_EQ(EnvDoubleVar("VN_TEST_A", 5.5).getValue(), 5.5);
}

TEST_F(EnvVarTest, numbersAreDumpedWithTheirDefault)
{
    set("VN_TEST_A=17");
    EXPECT_EQ(written(EnvIntVar("VN_TEST_A", -5)), "name                 VN_TEST_A value 17 default -5");
    EXPECT_EQ(written(EnvDoubleVar("VN_TEST_A", 0.125)), "name                 VN_TEST_A value 17 default 0.125");
    EXPECT_EQ(written(EnvIntVar("VN_TEST_B", 3)), "name                 VN_TEST_B value 3 default 3");
}

TEST_F(EnvVarTest, theNameFillsAFieldOf25)
{
    const struct
    {
        char const* name;
        char const* field;
    } table[] = {
        {"ABCDEFGHIJKLMNOPQRSTUVWX", " ABCDEFGHIJKLMNOPQRSTUVWX"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXY", "ABCDEFGHIJKLMNOPQRSTUVWXY"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", "ABCDEFGHIJKLMNOPQRSTUVWXYZ"},  // it simply overflows
        {"", "                         "},
    };
    for (auto const& row : table)
        EXPECT_EQ(written(EnvIntVar(row.name, 1)), "name " + std::string(row.field) + " value 1 default 1");
    EXPECT_EQ(written(EnvVar(nullptr, "x")), "name " + std::string(25, ' ') + " value \"NIL\" default \"x\"");
}

TEST_F(EnvVarTest, theFieldIsRightAlignedWhateverTheStreamHadAndItsStateStays)
{
    for (auto adjustment : {std::ios_base::left, std::ios_base::internal, std::ios_base::right}) {
        std::ostringstream stream;
        stream.setf(adjustment, std::ios_base::adjustfield);
        stream << std::hex << std::showbase << std::setprecision(3);
        const auto flags = stream.flags();
        stream << EnvIntVar("VN_TEST_A", 255);
        EXPECT_EQ(stream.str(), "name                 VN_TEST_A value 0xff default 0xff");
        EXPECT_EQ(stream.flags(), flags);
        EXPECT_EQ(stream.precision(), 3);
    }
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(2) << EnvDoubleVar("VN_TEST_A", 1.5);
    EXPECT_EQ(stream.str(), "name                 VN_TEST_A value 1.50 default 1.50");
}

VN_CHILD(envRegistry)
{
    EnvVar::getRegistry().clear();  // of this file's static one
    std::cout << "[" << EnvVar::getRegistry() << "]\n";
    const EnvVar a("a", nullptr);
    std::optional<EnvIntVar> b(std::in_place, "b", 2);
    const EnvDoubleVar c("c", 0.5);
    std::cout << "[" << EnvVar::getRegistry() << "]\n";
    {
        const EnvVar copy(a);
        const EnvIntVar copyOfB(*b);
        std::cout << copy.getName() << copyOfB.getValue() << EnvVar::getRegistry().size() << "\n";
    }
    b.reset();
    std::cout << "[" << EnvVar::getRegistry() << "]\n";
    EnvVar::getRegistry().push_back(EnvVar::getRegistry().front());  // twice, as nothing prevents it
    {
        EnvVar d("d", nullptr);
        EnvVar::getRegistry().push_front(&d);
        std::cout << EnvVar::getRegistry().size() << "\n";
    }
    std::cout << EnvVar::getRegistry().size() << "\n";
    return 0;
}

TEST(EnvVarRegistry, listsTheLivingInOrderAndNoCopies)
{
    const std::string blanks(24, ' ');
    const std::string a = "\nname " + blanks + "a value \"NIL\" default \"NIL\"",
                      b = "\nname " + blanks + "b value 2 default 2",
                      c = "\nname " + blanks + "c value 0.5 default 0.5";
    VnTest::expectOutput("envRegistry", "[]\n[" + a + b + c + "]\na23\n[" + a + c + "]\n5\n3\n");
}

TEST(EnvVarRegistry, isAListThatObjectsLeaveInAnyOrder)
{
    const Vn::List<EnvVar*> others = EnvVar::getRegistry();
    std::mt19937 random(1);
    std::vector<std::unique_ptr<EnvVar>> objects;
    Vn::List<EnvVar*> expected = others;
    for (int step = 0; step < 2000; ++step) {
        if (objects.empty() || random() % 2 == 0) {
            objects.push_back(std::make_unique<EnvVar>("VN_TEST_A", nullptr));
            expected.push_back(objects.back().get());
        } else {
            const auto leaving = objects.begin() + static_cast<std::ptrdiff_t>(random() % objects.size());
            expected.remove(leaving->get());
            objects.erase(leaving);
        }
        ASSERT_EQ(Vn::List<EnvVar*>(EnvVar::getRegistry()), expected);
    }
    objects.clear();
    EXPECT_EQ(Vn::List<EnvVar*>(EnvVar::getRegistry()), others);
}

TEST(EnvVarRegistry, aCopyIsAListOfItsOwn)
{
    EnvVar one("one", nullptr), two("two", nullptr);
    EnvVarRegistry list;
    EXPECT_TRUE(list.empty());
    for (EnvVar* variable : {&one, &two, &one})
        list.push_back(variable);
    EnvVarRegistry copy(list), assigned;
    assigned.push_front(&two);
    assigned = list;
    list.remove(&one);
    EXPECT_EQ(list.size(), 1u);
    EXPECT_EQ(list.front(), &two);
    for (EnvVarRegistry* other : {&copy, &assigned}) {
        EXPECT_EQ(Vn::List<EnvVar*>(*other), (Vn::List<EnvVar*>{&one, &two, &one}));
        other->remove(&two);
        EXPECT_EQ(Vn::List<EnvVar*>(*other), (Vn::List<EnvVar*>{&one, &one}));
        other->remove(&one);
        EXPECT_TRUE(other->empty());
    }
    EXPECT_EQ(list.back(), &two);
    list = *&list;
    list.clear();
    list.remove(&two);
    EXPECT_EQ(list.begin(), list.end());
}

TEST_F(EnvVarTest, copiesHaveAllFields)
{
    set("VN_TEST_A=7");
    const EnvIntVar number("VN_TEST_A", 5);
    set("VN_TEST_A=8");
    const EnvIntVar copy(number);
    EXPECT_EQ(copy.getValue(), 7);
    EXPECT_EQ(copy.getName(), number.getName());
    EnvDoubleVar assigned("VN_TEST_B", 1.0);
    assigned = EnvDoubleVar("VN_TEST_A", 2.0);
    EXPECT_EQ(assigned.getValue(), 8.0);
    EXPECT_STREQ(assigned.getName(), "VN_TEST_A");
    EXPECT_EQ(written(assigned), "name                 VN_TEST_A value 8 default 2");
}

TEST_F(EnvVarTest, putEnvThrowsWhatTheSystemRefuses)
{
    for (char const* text : {"", "VN_TEST_A", "=value"})
        VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>([text] { EnvVar::putEnv(text); },
                                                                     "Could not set environment variable");
}

namespace
{
// Made before main, and destroyed behind it: the registry is there for both.
const EnvVar beforeMain("VN_TEST_STATIC", "static");
}  // namespace

TEST(EnvVarRegistry, isThereForStaticObjects)
{
    EXPECT_STREQ(beforeMain.getValue(), "static");
    bool isListed = false;
    for (EnvVar const* variable : EnvVar::getRegistry())
        isListed |= variable == &beforeMain;
    EXPECT_TRUE(isListed);
}
