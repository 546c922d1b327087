#include <base/inoptionparser.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Vn::InOptionParser;

namespace
{
/// An argument vector each of whose elements is an allocation of its own, so that the address sanitizer sees a read
/// behind any of them. Nothing follows the last element.
class Arguments
{
public:
    Arguments(std::vector<std::string> elements)
    {
        for (std::string const& element : elements) {
            _storage.emplace_back(new char[element.size() + 1]);
            std::strcpy(_storage.back().get(), element.c_str());
        }
        _pointers.reset(new char*[_storage.size()]);
        for (std::size_t i = 0; i < _storage.size(); ++i)
            _pointers[i] = _storage[i].get();
    }

    int count() const { return static_cast<int>(_storage.size()); }
    char** get() const { return _pointers.get(); }

private:
    std::vector<std::unique_ptr<char[]>> _storage;
    std::unique_ptr<char*[]> _pointers;
};

/// One result of getOption(), with what can be asked behind it.
struct Step
{
    int option;
    char const* value;  ///< null for none
    int index;
};

void expectSteps(std::vector<std::string> const& elements, char const* options, std::vector<Step> const& steps)
{
    const Arguments arguments(elements);
    InOptionParser parser(arguments.count(), arguments.get(), options);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "step " << i);
        EXPECT_EQ(parser.getOption(), steps[i].option);
        EXPECT_STREQ(parser.getValue(), steps[i].value);
        EXPECT_EQ(parser.getArgumentIndex(), steps[i].index);
    }
}
}  // namespace

TEST(InOptionParser, programNameAloneEndsAtIndexOne)
{
    expectSteps({"prog"}, "ab", {{-1, nullptr, 1}});
}

TEST(InOptionParser, beginsAtIndexZeroWithoutAValue)
{
    const Arguments arguments({"prog", "-a"});
    const InOptionParser parser(arguments.count(), arguments.get(), "a");
    EXPECT_EQ(parser.getArgumentIndex(), 0);
    EXPECT_EQ(parser.getValue(), nullptr);
}

TEST(InOptionParser, operandEndsTheOptionsAndStays)
{
    expectSteps({"prog", "-a", "file", "-b"}, "ab", {{'a', nullptr, 1}, {-1, nullptr, 2}});
}

TEST(InOptionParser, loneDashEndsTheOptionsAndStays)
{
    expectSteps({"prog", "-", "-a"}, "a", {{-1, nullptr, 1}});
}

TEST(InOptionParser, emptyElementEndsTheOptionsAndStays)
{
    expectSteps({"prog", "", "-a"}, "a", {{-1, nullptr, 1}});
}

TEST(InOptionParser, twoDashesEndTheOptionsAndAreConsumed)
{
    expectSteps({"prog", "--", "-a"}, "a", {{-1, nullptr, 2}});
    expectSteps({"prog", "--verbose", "-a"}, "a", {{-1, nullptr, 2}});
    expectSteps({"prog", "-a", "--"}, "a", {{'a', nullptr, 1}, {-1, nullptr, 3}});
}

TEST(InOptionParser, lettersStandTogether)
{
    expectSteps({"prog", "-ab", "-c"}, "abc",
                {{97, nullptr, 1}, {98, nullptr, 1}, {'c', nullptr, 2}, {-1, nullptr, 3}});
}

TEST(InOptionParser, valueStandsBehindItsLetter)
{
    expectSteps({"prog", "-ab"}, "a:", {{97, "b", 1}, {-1, nullptr, 2}});
    expectSteps({"prog", "-xofile", "-x"}, "o:x", {{'x', nullptr, 1}, {'o', "file", 1}, {'x', nullptr, 2}});
}

TEST(InOptionParser, valueStandsInTheNextElement)
{
    expectSteps({"prog", "-o", "file", "rest"}, "o:", {{'o', "file", 2}, {-1, nullptr, 3}});
}

TEST(InOptionParser, valueMayBeginWithADash)
{
    expectSteps({"prog", "-o", "-x"}, "o:x", {{'o', "-x", 2}, {-1, nullptr, 3}});
    expectSteps({"prog", "-o", "--", "-x"}, "o:x", {{'o', "--", 2}, {'x', nullptr, 3}});
}

TEST(InOptionParser, emptyElementIsAValue)
{
    expectSteps({"prog", "-o", "", "-x"}, "o:x", {{'o', "", 2}, {'x', nullptr, 3}, {-1, nullptr, 4}});
}

TEST(InOptionParser, missingValueIsNullAndTheNextCallEnds)
{
    expectSteps({"prog", "-o"}, "o:", {{111, nullptr, 1}, {-1, nullptr, 2}});
}

TEST(InOptionParser, unknownLetterIs63AndStaysOnItsElement)
{
    expectSteps({"prog", "-qa", "-b"}, "ab", {{63, nullptr, 1}, {'a', nullptr, 1}, {'b', nullptr, 2}});
    expectSteps({"prog", "-q"}, "", {{63, nullptr, 1}, {-1, nullptr, 2}});
}

TEST(InOptionParser, questionMarkIsALetterLikeAnyOther)
{
    expectSteps({"prog", "-?"}, "?", {{63, nullptr, 1}, {-1, nullptr, 2}});
}

TEST(InOptionParser, colonCountsAsAKnownLetter)
{
    expectSteps({"prog", "-:x"}, "o:x", {{':', nullptr, 1}, {'x', nullptr, 1}});
    expectSteps({"prog", "-:", "v"}, "o::", {{':', "v", 2}});
}

TEST(InOptionParser, valueOfTheLastOptionIsClearedByTheNextCall)
{
    expectSteps({"prog", "-o", "v", "-x"}, "o:x", {{'o', "v", 2}, {'x', nullptr, 3}});
}

TEST(InOptionParser, lettersBeyondAsciiAreSigned)
{
    expectSteps({"prog", "-\xe4"}, "\xe4", {{0xe4 - 256, nullptr, 1}});
}

TEST(InOptionParser, letterOfTheValue255ReadsAsTheEnd)
{
    expectSteps({"prog", "-\xff"
                         "a"},
                "\xff"
                "a",
                {{-1, nullptr, 1}, {'a', nullptr, 1}, {-1, nullptr, 2}});
}

TEST(InOptionParser, endIsFinal)
{
    for (std::vector<std::string> const& elements :
         {std::vector<std::string>{"prog"}, {"prog", "file", "-a"}, {"prog", "--", "-a"}, {"prog", "--aa", "-a"}}) {
        const Arguments arguments(elements);
        InOptionParser parser(arguments.count(), arguments.get(), "a");
        EXPECT_EQ(parser.getOption(), -1);
        const int index = parser.getArgumentIndex();
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(parser.getOption(), -1);
        EXPECT_EQ(parser.getArgumentIndex(), index);
        EXPECT_EQ(parser.gotoNextValue(), nullptr);
    }
}

TEST(InOptionParser, emptyProgramNameIsPassedOver)
{
    expectSteps({"", "-a"}, "a", {{'a', nullptr, 1}, {-1, nullptr, 2}});
}

TEST(InOptionParser, vectorWithoutElementsIsAtItsEnd)
{
    char* none[] = {nullptr};
    InOptionParser zero(0, none, "a");
    EXPECT_EQ(zero.getOption(), -1);
    EXPECT_EQ(zero.gotoNextValue(), nullptr);
    InOptionParser negative(-3, none, "a");
    EXPECT_EQ(negative.getOption(), -1);
    InOptionParser null(2, nullptr, "a");
    EXPECT_EQ(null.getOption(), -1);
}

TEST(InOptionParser, nullElementIsNoOption)
{
    char program[] = "prog";
    char option[] = "-o";
    char* arguments[] = {program, option, nullptr, nullptr};
    InOptionParser parser(4, arguments, "o:");
    EXPECT_EQ(parser.getOption(), 'o');
    EXPECT_EQ(parser.getValue(), nullptr);
    EXPECT_EQ(parser.getOption(), -1);
}

TEST(InOptionParser, nullOptionStringKnowsNoLetter)
{
    const Arguments arguments({"prog", "-a"});
    InOptionParser parser(arguments.count(), arguments.get(), nullptr);
    EXPECT_EQ(parser.getOption(), 63);
}

TEST(InOptionParser, gotoNextValueTakesFurtherElements)
{
    const Arguments arguments({"prog", "-o", "a", "b", "c"});
    InOptionParser parser(arguments.count(), arguments.get(), "o:");
    EXPECT_EQ(parser.getOption(), 'o');
    EXPECT_STREQ(parser.getValue(), "a");
    EXPECT_STREQ(parser.gotoNextValue(), "b");
    EXPECT_STREQ(parser.getValue(), "b");
    EXPECT_EQ(parser.getArgumentIndex(), 3);
    EXPECT_STREQ(parser.gotoNextValue(), "c");
    EXPECT_EQ(parser.gotoNextValue(), nullptr);
    EXPECT_EQ(parser.getArgumentIndex(), 4);
    EXPECT_EQ(parser.gotoNextValue(), nullptr);
    EXPECT_EQ(parser.getOption(), -1);
    EXPECT_EQ(parser.getArgumentIndex(), 5);
}

TEST(InOptionParser, gotoNextValueTakesAnElementThatBeginsWithADash)
{
    const Arguments arguments({"prog", "-oa", "-x", "-y"});
    InOptionParser parser(arguments.count(), arguments.get(), "o:xy");
    EXPECT_EQ(parser.getOption(), 'o');
    EXPECT_STREQ(parser.gotoNextValue(), "-x");
    EXPECT_EQ(parser.getOption(), 'y');
}

TEST(InOptionParser, gotoNextValueWithoutAValueIsNull)
{
    const Arguments arguments({"prog", "-x", "a"});
    InOptionParser parser(arguments.count(), arguments.get(), "x");
    EXPECT_EQ(parser.gotoNextValue(), nullptr);
    EXPECT_EQ(parser.getOption(), 'x');
    EXPECT_EQ(parser.gotoNextValue(), nullptr);
    EXPECT_EQ(parser.getArgumentIndex(), 1);
}

namespace
{
struct SubOption
{
    int index;
    char const* value;
};

void expectSubOptions(char const* text, std::vector<char const*> const& tokens,
                      std::vector<SubOption> const& expected)
{
    SCOPED_TRACE(text);
    std::vector<char*> names;
    for (char const* token : tokens)
        names.push_back(const_cast<char*>(token));
    names.push_back(nullptr);
    const std::unique_ptr<char[]> copy(new char[std::strlen(text) + 1]);
    std::strcpy(copy.get(), text);

    char* position = copy.get();
    std::size_t i = 0;
    for (; *position != '\0'; ++i) {
        ASSERT_LT(i, expected.size());
        char* value = nullptr;
        EXPECT_EQ(InOptionParser::getSubOption(&position, names.data(), &value), expected[i].index);
        EXPECT_STREQ(value, expected[i].value);
    }
    EXPECT_EQ(i, expected.size());
}
}  // namespace

TEST(InOptionParser, subOptionsAreSplitAtCommas)
{
    expectSubOptions("ro,size=10,bad", {"ro", "size"}, {{0, nullptr}, {1, "10"}, {-1, "bad"}});
    expectSubOptions("a", {"a"}, {{0, nullptr}});
    expectSubOptions("a,", {"a"}, {{0, nullptr}});
    expectSubOptions(",a", {"a"}, {{-1, ""}, {0, nullptr}});
    expectSubOptions(",", {"a"}, {{-1, ""}});
    expectSubOptions("", {"a"}, {});
}

TEST(InOptionParser, subOptionValueMayBeEmptyOrHoldAnEqualsSign)
{
    expectSubOptions("a=", {"a"}, {{0, ""}});
    expectSubOptions("a=,b=x=y,=z", {"a", "b"}, {{0, ""}, {1, "x=y"}, {-1, ""}});
}

TEST(InOptionParser, unknownSubOptionGivesItsNameAndNotItsValue)
{
    expectSubOptions("x=1,y", {"a"}, {{-1, "x"}, {-1, "y"}});
}

TEST(InOptionParser, subOptionsMatchExactlyAndTheFirstMatchCounts)
{
    expectSubOptions("siz,sizes,SIZE,size", {"size", "siz", "size"},
                     {{1, nullptr}, {-1, "sizes"}, {-1, "SIZE"}, {0, nullptr}});
}

TEST(InOptionParser, subOptionAtTheEndIsTheEmptyName)
{
    char text[] = "";
    char* position = text;
    char* value = nullptr;
    EXPECT_EQ(InOptionParser::getSubOption(&position, nullptr, &value), -1);
    EXPECT_STREQ(value, "");
    EXPECT_EQ(position, text);
}
