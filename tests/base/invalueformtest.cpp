#include <base/invalueform.h>

#include <base/inpackages.h>
#include <base/invariable.h>

#include "expectchild.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <chrono>
#include <clocale>
#include <cstdint>
#include <iostream>
#include <limits>
#include <string>

using std::chrono::milliseconds;
using Vn::InValueForm;

namespace
{
/// What a text is read as, and whether it is a value as a whole.
template <class T>
struct Row
{
    char const* text;
    T value;
    bool isWhole;
};

template <class T, std::size_t Count>
void expectRows(Row<T> const (&table)[Count])
{
    for (auto const& row : table) {
        SCOPED_TRACE(row.text != nullptr ? row.text : "(null)");
        EXPECT_EQ(InValueForm<T>::read(row.text), row.value);
        EXPECT_EQ(InValueForm<T>::isWhole(row.text), row.isWhole);
    }
}

template <class T>
std::string textOf(T number)
{
    return std::to_string(number);
}

/// A whole number one larger, or one smaller for a negative one; textual, as no type holds it.
std::string oneBeyond(std::string number)
{
    ++number.back();  // no limit ends in a nine
    return number;
}

template <class T>
void expectLimits()
{
    for (const T limit : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()}) {
        const std::string text = textOf(limit);
        SCOPED_TRACE(text);
        EXPECT_EQ(InValueForm<T>::read(text.c_str()), limit);
        EXPECT_TRUE(InValueForm<T>::isWhole(text.c_str()));
        for (std::string const& beyond : {oneBeyond(text), text + "0", text + std::string(5000, '9')}) {
            EXPECT_EQ(InValueForm<T>::read(beyond.c_str()), limit);
            EXPECT_FALSE(InValueForm<T>::isWhole(beyond.c_str()));
        }
    }
}

std::string zeros(std::size_t count)
{
    return std::string(count, '0');
}

template <class T>
void expectFloatingRows()
{
    const T infinity = std::numeric_limits<T>::infinity();
    const T largest = std::numeric_limits<T>::max();
    const Row<T> table[] = {
        {"1.5", T(1.5), true},
        {" \t\n1.5 \r", T(1.5), true},
        {"+1.5", T(1.5), true},
        {"-.5", T(-0.5), true},
        {"5.", T(5), true},
        {"-2e3", T(-2000), true},
        {"0.1", T(0.1L), true},
        {"16777217", T(16777217), true},
        {"1.5 apples", T(1.5), false},
        {"1,5", T(1), false},
        {"1e", T(1), false},
        {"1e+", T(1), false},
        {"0x10", T(0), false},
        {"", T(0), false},
        {nullptr, T(0), false},
        {" ", T(0), false},
        {"apples", T(0), false},
        {".", T(0), false},
        {"-", T(0), false},
        {"+-5", T(0), false},
        {"++5", T(0), false},
        {"--5", T(0), false},
        {"inf", infinity, true},
        {"-Infinity", -infinity, true},
        {"infinite", infinity, false},
        {"nan", T(0), false},
        {"-NaN(5)", T(0), false},
        {"1e999", largest, false},
        {"-1e999", -largest, false},
        {"1e99999999999999999999", largest, false},
        {"0.001e999", largest, false},
        {"1e999.5e-9999", largest, false},
        {"1e-999", T(0), true},
        {"-1e-999", T(0), true},
        {"1000e-999", T(0), true},
        {"1e-99999999999999999999", T(0), true},
        {"0e999", T(0), true},
    };
    expectRows(table);
}
}  // namespace

TEST(InValueForm, aWholeNumberIsReadAsFarAsItGoes)
{
    const Row<int> table[] = {
        {"12", 12, true},
        {" \t\n\v\f\r12", 12, true},
        {"12 ", 12, true},
        {"-3", -3, true},
        {"+7", 7, true},
        {"007", 7, true},
        {"-0", 0, true},
        {"12abc", 12, false},
        {"12 13", 12, false},
        {"1.5", 1, false},
        {"1e3", 1, false},
        {"0x10", 0, false},
        {"", 0, false},
        {nullptr, 0, false},
        {" ", 0, false},
        {"abc", 0, false},
        {"-", 0, false},
        {"+", 0, false},
        {"+-5", 0, false},
        {"- 5", 0, false},
        {"--5", 0, false},
        {"\xA0"
         "12",
         0, false},
    };
    expectRows(table);
    for (auto const& row : table) {
        SCOPED_TRACE(row.text != nullptr ? row.text : "(null)");
        EXPECT_EQ(InValueForm<long>::read(row.text), row.value);
        EXPECT_EQ(InValueForm<long>::isWhole(row.text), row.isWhole);
    }
}

TEST(InValueForm, aWholeNumberBeyondItsTypeIsTheNearestLimit)
{
    expectLimits<int>();
    expectLimits<long>();
}

TEST(InValueForm, aNumberIsReadAsFarAsItGoes)
{
    expectFloatingRows<double>();
    expectFloatingRows<float>();
}

TEST(InValueForm, aNumberIsTheNearestOneOfItsType)
{
    EXPECT_EQ(InValueForm<double>::read("0.1"), 0.1);
    EXPECT_EQ(InValueForm<double>::read("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(InValueForm<double>::read("4e-324"), std::numeric_limits<double>::denorm_min());
    // Just above the middle of two floats, and exactly the middle once it is rounded to a double.
    EXPECT_EQ(InValueForm<float>::read("1.00000005960464477539062500000001"), 1.00000011920928955078125F);
    EXPECT_EQ(InValueForm<float>::read("1e39"), std::numeric_limits<float>::max());
    EXPECT_EQ(InValueForm<float>::read("-1e39"), std::numeric_limits<float>::lowest());
    EXPECT_EQ(InValueForm<float>::read("1e-46"), 0.0F);
    EXPECT_EQ(InValueForm<double>::read("1e39"), 1e39);
}

TEST(InValueForm, aLongNumberOutsideItsTypeIsNotTakenForItsOpposite)
{
    const double largest = std::numeric_limits<double>::max();
    const struct
    {
        char const* what;
        std::string text;
        double value;
    } table[] = {
        {"digits", "1" + zeros(400), largest},
        {"digits and a fraction", "1" + zeros(400) + ".5.2e-9999", largest},
        {"digits and an exponent", "1" + zeros(400) + "e1", largest},
        {"many digits, and a small exponent that takes them back", "1" + zeros(400) + "e-800", 0},
        {"zeros in front of digits", zeros(900) + "1" + zeros(400), largest},
        {"zeros behind the point", "0." + zeros(400) + "1", 0},
        {"zeros behind the point, and an exponent that is larger", "0." + zeros(400) + "1e800", largest},
        {"zeros in front of a small one", zeros(900) + "." + zeros(400) + "1", 0},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(InValueForm<double>::read(row.text.c_str()), row.value);
        EXPECT_EQ(InValueForm<double>::read(("-" + row.text).c_str()), -row.value);
    }
}

TEST(InValueForm, aTruthValueIsFalseForZeroAndFalse)
{
    const Row<bool> table[] = {
        {"0", false, true},    {"false", false, true},     {"FALSE", false, true},   {"", true, true},
        {nullptr, true, true}, {"1", true, true},          {"true", true, true},     {"True", true, true},
        {"00", true, false},   {" 0", true, false},        {"0 ", true, false},      {"no", true, false},
        {"off", true, false},  {"2", true, false},         {"falsely", true, false}, {"fals", true, false},
        {"tru", true, false},  {"FALSE\x20", true, false}, {"\x10", true, false},
    };
    expectRows(table);
}

TEST(InValueForm, aTimeHasAUnitOrIsInMilliseconds)
{
    const Row<milliseconds> table[] = {
        {"250", milliseconds(250), true},
        {"250ms", milliseconds(250), true},
        {" 250 ms ", milliseconds(250), true},
        {"2s", milliseconds(2000), true},
        {"1.5s", milliseconds(1500), true},
        {".5s", milliseconds(500), true},
        {"5.s", milliseconds(5000), true},
        {"+1min", milliseconds(60000), true},
        {"-2min", milliseconds(-120000), true},
        {"1.5h", milliseconds(5400000), true},
        {"0.1s", milliseconds(100), true},
        {"0.0004s", milliseconds(0), true},
        {"0.0005s", milliseconds(1), true},
        {"-0.0005s", milliseconds(-1), true},
        {"1.0005s", milliseconds(1001), true},
        {"0.999999999999999999999s", milliseconds(1000), true},
        {"0.000000138889h", milliseconds(1), true},  // 0.5000004 ms
        {"0.000000138888h", milliseconds(0), true},  // 0.4999968 ms
        {"5m", milliseconds(5), false},
        {"5 minutes", milliseconds(5), false},
        {"5minutes", milliseconds(5), false},
        {"5 hundred", milliseconds(5), false},
        {"3 spoons", milliseconds(3), false},
        {"5 s\xc3\xa9", milliseconds(5), false},
        {"5 msx", milliseconds(5), false},
        {"5s.", milliseconds(5000), false},
        {"5min2", milliseconds(300000), false},
        {"1s 500ms", milliseconds(1000), false},
        {"1e3", milliseconds(1), false},
        {"1,5s", milliseconds(1), false},
        {"1..5s", milliseconds(1), false},
        {"5S", milliseconds(5), false},
        {"", milliseconds(0), false},
        {nullptr, milliseconds(0), false},
        {"s", milliseconds(0), false},
        {".s", milliseconds(0), false},
        {"- 5s", milliseconds(0), false},
        {"+-5s", milliseconds(0), false},
        {"inf", milliseconds(0), false},
    };
    expectRows(table);
}

// A count that another type holds would be cut on its way.
static_assert(Vn::InTimeType<milliseconds>);
static_assert(!Vn::InTimeType<std::chrono::duration<std::uint64_t, std::milli>>);
static_assert(!Vn::InTimeType<std::chrono::duration<std::int32_t, std::milli>>);
static_assert(!Vn::InTimeType<std::chrono::seconds>);

TEST(InValueForm, aTimeBeyondItsTypeIsTheNearestLimit)
{
    const milliseconds longest = milliseconds::max(), lowest = milliseconds::min();
    const Row<milliseconds> table[] = {
        {"9223372036854775807", longest, true},      {"9223372036854775807.4ms", longest, true},
        {"9223372036854775807.5ms", longest, false}, {"9223372036854775808", longest, false},
        {"-9223372036854775808", lowest, true},      {"-9223372036854775808.5", lowest, false},
        {"-9223372036854775809", lowest, false},     {"9223372036854775s", milliseconds(9223372036854775000), true},
        {"9223372036854775.807s", longest, true},    {"9223372036854775.808s", longest, false},
        {"-9223372036854775.808s", lowest, true},    {"9223372036854776s", longest, false},
        {"18446744073709551.6155s", longest, false}, {"-18446744073709551.6155s", lowest, false},
        {"18446744073709551.999s", longest, false},  {"18446744073709552s", longest, false},
        {"18446744073709552s", longest, false},      {"18446744073709551616", longest, false},
        {"184467440737095516160", longest, false},   {"-99999999999999999999h", lowest, false},
    };
    expectRows(table);
}

TEST(InValueForm, aTextIsItself)
{
    char const* const text = "a text\n";
    EXPECT_EQ(InValueForm<char const*>::read(text), text);
    EXPECT_EQ(InValueForm<std::string>::read(text), "a text\n");
    EXPECT_STREQ(InValueForm<char const*>::read(nullptr), "");
    EXPECT_EQ(InValueForm<std::string>::read(nullptr), "");
    for (char const* each : {text, "", static_cast<char const*>(nullptr)}) {
        EXPECT_TRUE(InValueForm<char const*>::isWhole(each));
        EXPECT_TRUE(InValueForm<std::string>::isWhole(each));
    }
}

TEST(InValueForm, theLocaleChangesNothing)
{
    for (char const* name : {"de_DE.UTF-8", "de_DE", "German_Germany.1252", ""}) {
        std::setlocale(LC_ALL, name);
        EXPECT_EQ(InValueForm<double>::read("1.5"), 1.5) << name;
        EXPECT_EQ(InValueForm<float>::read("1,5"), 1.0F) << name;
        EXPECT_EQ(InValueForm<milliseconds>::read("1.5s"), milliseconds(1500)) << name;
    }
    std::setlocale(LC_ALL, "C");
}

TEST(InValueForm, formsHaveNames)
{
    EXPECT_STREQ(InValueForm<int>::getName(), "whole number");
    EXPECT_STREQ(InValueForm<long>::getName(), "whole number");
    EXPECT_STREQ(InValueForm<bool>::getName(), "true or false");
    EXPECT_STREQ(InValueForm<float>::getName(), "number");
    EXPECT_STREQ(InValueForm<double>::getName(), "number");
    EXPECT_STREQ(InValueForm<milliseconds>::getName(), "time");
    EXPECT_STREQ(InValueForm<char const*>::getName(), "text");
    EXPECT_STREQ(InValueForm<std::string>::getName(), "text");
}

namespace
{
/// A variable of no type that the library knows.
class BareVariable : public Vn::InVariableBase
{
public:
    BareVariable(char const* handle, Vn::InPackageInitBase& package, Vn::InContextAliasBase const& alias)
        : InVariableBase(handle, package, alias)
    {}
};

class OwnVariable : public Vn::InVariable<int>
{
public:
    using InVariable<int>::InVariable;
};

template <class Variable>
void printForm(char const* text, char const* other)
{
    VnTest::NumberedPackage<1> package("forms");
    const Vn::InContextAlias<Vn::InInitDef, 0> fallback("", "default");
    const Variable variable("form", package, fallback);
    const Vn::InVariableForm form(*Vn::InVariableBase::queryViaHandle("form"));
    std::cout << form.getName() << ' ' << form.isWhole(text) << form.isWhole(other) << '\n';
}
}  // namespace

VN_CHILD(forms)
{
    printForm<Vn::InVariable<int>>("2147483647", "2147483648");
    printForm<OwnVariable>("-12", "1.5");
    printForm<Vn::InVariable<bool>>("false", "no");
    printForm<Vn::InVariable<char const*>>("text", "");
    printForm<Vn::InVariable<long>>("-12", "1.5");
    printForm<Vn::InVariable<float>>("1e38", "1e39");
    printForm<Vn::InVariable<double>>("1e39", "1e999");
    printForm<Vn::InVariable<std::string>>("text", "");
    printForm<Vn::InVariable<milliseconds>>("1.5s", "1.5e0");
    printForm<BareVariable>("text", "");
    return 0;
}

TEST(InVariableForm, isThatOfTheVariablesType)
{
    VnTest::expectOutput("forms",
                         "whole number 10\nwhole number 10\ntrue or false 10\ntext 11\nwhole number 10\nnumber 10\n"
                         "number 10\ntext 11\ntime 10\ntext 11\n");
}
