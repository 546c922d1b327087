#include <base/incontextalias.h>
#include <base/incontextaliasmgr.h>
#include <base/inex.h>

#include "expectchild.h"
#include "ownsettings.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::expectOutput;
using VnTest::OwnSettings;
using VnTest::report;
using VnTest::start;
using VnTest::startWith;
using VnTest::stop;

using Override = InContextAlias<InInitOvr, 0>;
using Argument = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

static_assert(std::is_same_v<VnInit::InInitArg, InInitArg> && std::is_same_v<VnInit::InInitOvr, InInitOvr> &&
              std::is_same_v<VnInit::InInitEnv, InInitEnv> && std::is_same_v<VnInit::InInitDef, InInitDef>);

namespace
{
/// An alias with every operation in reach, of no kind.
class PlainAlias : public InContextAliasBase
{
public:
    explicit PlainAlias(char const* description) : InContextAliasBase(description) {}
    PlainAlias(PlainAlias const& other) : InContextAliasBase(other) {}
    InContextAliasBase* clone() const override { return new PlainAlias(*this); }
    unsigned long getPriority() const override { return 1; }
    char const* getKey() const override { return "key"; }
};

char const* valueOf(InContextAliasBase const& alias)
{
    return alias.isValid() ? alias.getValue() : "(none)";
}

void printUnbound()
{
    for (char const* argument : InContextAliasMgrBase::getUnboundArgs())
        std::cout << argument << " ";
    std::cout << "\n";
}
}  // namespace

// ---- one alias

TEST(InContextAliasBase, beginsWithoutALifeAndWithoutAValue)
{
    const PlainAlias alias("described");
    EXPECT_FALSE(alias.isValid());
    EXPECT_STREQ(alias.getDescription(), "described");
    try {
        alias.getValue();
        FAIL();
    } catch (InEx::ExUninitializedObject const& failure) {
        EXPECT_STREQ(failure.what(), "Trying to access an object that is not fully initialized: 'described'.");
    }
}

TEST(InContextAliasBase, initialisedWithNullHasNoValue)
{
    PlainAlias alias("described");
    alias.initialize(nullptr);
    EXPECT_FALSE(alias.isValid());
    try {
        alias.getValue();
        FAIL();
    } catch (InEx::ExInvalidObject const& failure) {
        EXPECT_STREQ(failure.what(), "Trying to access an object that has an invalid value: 'described'.");
    }
}

TEST(InContextAliasBase, valueIsACopyThatNullLeavesAsItIs)
{
    PlainAlias alias("described");
    std::string text = "first";
    alias.initialize(text.c_str());
    text[0] = 'X';
    EXPECT_STREQ(alias.getValue(), "first");
    alias.initialize(nullptr);
    EXPECT_STREQ(alias.getValue(), "first");
    alias.initialize("second");
    EXPECT_STREQ(alias.getValue(), "second");
    alias.initialize(alias.getValue());
    EXPECT_STREQ(alias.getValue(), "second");
    alias.initialize("");
    EXPECT_TRUE(alias.isValid());
    EXPECT_STREQ(alias.getValue(), "");
}

TEST(InContextAliasBase, finalizeKeepsTheValueForALaterLife)
{
    PlainAlias alias("described");
    alias.initialize("kept");
    alias.finalize();
    EXPECT_FALSE(alias.isValid());
    EXPECT_THROW(alias.getValue(), InEx::ExUninitializedObject);
    alias.initialize(nullptr);
    EXPECT_STREQ(alias.getValue(), "kept");
}

TEST(InContextAliasBase, copyHasEverything)
{
    PlainAlias alias("described");
    alias.initialize("value");
    const PlainAlias copy(alias);
    EXPECT_TRUE(copy.isValid());
    EXPECT_STREQ(copy.getValue(), "value");
    EXPECT_NE(copy.getValue(), alias.getValue());
    EXPECT_STREQ(copy.getDescription(), "described");
}

TEST(InContextAliasBase, nullDescriptionIsEmpty)
{
    EXPECT_STREQ(PlainAlias(nullptr).getDescription(), "");
}

// ---- kinds

TEST(InContextAlias, prioritiesRankTheKinds)
{
    EXPECT_EQ(Override("x", "d").getPriority(), 4294967295ul);
    EXPECT_EQ(Argument("x", "d").getPriority(), 15ul);
    EXPECT_EQ(Environment("x", "d").getPriority(), 10ul);
    EXPECT_EQ(Default("x", "d").getPriority(), 0ul);
}

TEST(InContextAlias, sourceStringIsTheRunTimeTypeName)
{
    EXPECT_STREQ(Override::initSourceString(), typeid(Override).name());
    EXPECT_STREQ(Argument::initSourceString(), typeid(Argument).name());
    EXPECT_STREQ(Environment::initSourceString(), typeid(Environment).name());
    EXPECT_STREQ(Default::initSourceString(), typeid(Default).name());
}

TEST(InContextAlias, keyIsACopyAndNullIsEmpty)
{
    std::string key = "k";
    const Default alias(key.c_str(), "d");
    key[0] = 'x';
    EXPECT_STREQ(alias.getKey(), "k");
    EXPECT_STREQ(Default(nullptr, nullptr).getKey(), "");
}

TEST(InContextAlias, keyOfAUniqueKindIsDeclaredOnce)
{
    const Environment first("VN_TEST_KEY", "first");
    try {
        Environment second("VN_TEST_KEY", "second");
        FAIL();
    } catch (InEx::ExContextAliasAlreadyDefined const& failure) {
        EXPECT_STREQ(failure.what(), "Trying to re-create an already existing Context Alias: 'VN_TEST_KEY'.");
    }
    const Environment other("VN_TEST_OTHER", "other");
    const Argument option("o", "option");
    EXPECT_THROW(Argument("o", "again"), InEx::ExContextAliasAlreadyDefined);
    EXPECT_NO_THROW(Argument("o:", "another key"));
}

TEST(InContextAlias, keyOfAnotherKindMayRepeat)
{
    const Default first("same", "first");
    EXPECT_NO_THROW(Default("same", "second"));
    const Override override("same", "first");
    EXPECT_NO_THROW(Override("same", "second"));
}

TEST(InContextAlias, keyIsFreeWhenItsLastUserHasGone)
{
    std::unique_ptr<InContextAliasBase> clone;
    {
        const Environment alias("VN_TEST_KEY", "d");
        clone.reset(alias.clone());
        EXPECT_THROW(Environment("VN_TEST_KEY", "d"), InEx::ExContextAliasAlreadyDefined);
    }
    EXPECT_THROW(Environment("VN_TEST_KEY", "d"), InEx::ExContextAliasAlreadyDefined) << "the clone still uses it";
    clone.reset();
    EXPECT_NO_THROW(Environment("VN_TEST_KEY", "d"));
}

TEST(InContextAlias, cloneHasKindKeyAndDescription)
{
    const Environment alias("VN_TEST_KEY", "d");
    const std::unique_ptr<InContextAliasBase> clone(alias.clone());
    InContextAliasBase const& copied = *clone;
    EXPECT_EQ(typeid(copied), typeid(Environment));
    EXPECT_STREQ(clone->getKey(), "VN_TEST_KEY");
    EXPECT_NE(clone->getKey(), alias.getKey());
    EXPECT_STREQ(clone->getDescription(), "d");
}

// ---- the managers

VN_CHILD(sources)
{
    Override override("o", "d");
    Environment set("VN_TEST_SET", "d");
    Environment empty("VN_TEST_EMPTY", "d");
    Environment unset("VN_TEST_UNSET", "d");
    Default fallback("f", "d");
    const std::vector<InContextAliasBase const*> all{&override, &set, &empty, &unset, &fallback};
    const auto print = [&all] {
        for (InContextAliasBase const* alias : all)
            std::cout << "[" << valueOf(*alias) << "]";
        std::cout << "\n";
    };
    print();
    start();
    print();
    stop();
    print();
    return 0;
}

TEST(InContextAliasMgr, sourcesHaveTheirValuesFromStartToStop)
{
    const ChildRun run = Child("sources")
                             .with("VN_TEST_SET", "value")
#if !defined(_WIN32)  // which has no empty variables
                             .with("VN_TEST_EMPTY", "")
#endif
                             .without("VN_TEST_UNSET")
                             .run();
#if defined(_WIN32)
    char const* const empty = "[(none)]";
#else
    char const* const empty = "[]";
#endif
    EXPECT_EQ(run.out, std::string("[(none)][(none)][(none)][(none)][(none)]\n[o][value]") + empty +
                           "[(none)][f]\n[(none)][(none)][(none)][(none)][(none)]\n");
}

VN_CHILD(oddVariables)
{
    constexpr char const* keys[] = {"VN_TEST_TWICE",  "VN_TEST_SIGN",
                                    "VN_TEST_SIGN=A", "VN_TEST_SIGN=A=B",
                                    "=VN_TEST",       "",
                                    "VN_TEST_NONE",   "VN_TEST_SHORT",
                                    "VN_TEST_",       "="};
    std::vector<std::unique_ptr<Environment>> sources;
    for (char const* key : keys)
        sources.push_back(std::make_unique<Environment>(key, "d"));
    start();
    for (auto const& source : sources) {
        char const* const value = std::getenv(source->getKey());
        std::cout << "[" << valueOf(*source) << "]";
        if (source->isValid() != (value != nullptr) ||
            (value != nullptr && std::string(value) != source->getValue()))
            std::cout << " but getenv gives " << (value != nullptr ? value : "(none)") << "\n";
    }
    return 0;
}

TEST(InContextAliasMgr, variablesAreThoseThatGetenvGives)
{
    const ChildRun run = Child("oddVariables")
                             .withEntry("VN_TEST_TWICE=first")
                             .withEntry("VN_TEST_TWICE=second")
                             .withEntry("VN_TEST_SIGN=A=B=C")
                             .withEntry("VN_TEST_SHORT")
                             .withEntry("=VN_TEST=odd")
                             .without("VN_TEST_NONE")
                             .run();
    EXPECT_EQ(run.out.find("but"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("[A=B=C]"), std::string::npos) << run.out;
}

#if !defined(_WIN32)
VN_CHILD(noEnvironment)
{
    const Environment unset("VN_TEST_SET", "d");
    ::clearenv();
    start();
    std::cout << valueOf(unset) << "\n";
    return 0;
}

TEST(InContextAliasMgr, withoutAnEnvironmentNothingIsSet)
{
    EXPECT_EQ(Child("noEnvironment").with("VN_TEST_SET", "value").run().out, "(none)\n");
}
#endif

VN_CHILD(manyOptions)
{
    const Argument verbose("v", "d");
    const Argument output("o:", "d");
    std::vector<std::string> arguments{"prog"};
    for (int i = 0; i < 1000; ++i) {
        arguments.push_back("-v");
        arguments.push_back("-o");
        arguments.push_back(std::to_string(i));
    }
    for (int i = 0; i < 1000; ++i)
        arguments.push_back("file " + std::to_string(i));
    std::vector<char const*> pointers;
    for (std::string const& argument : arguments)
        pointers.push_back(argument.c_str());
    int count = static_cast<int>(pointers.size());
    char const* const* vector = pointers.data();
    InInitMgr::getInstance().initialize(count, vector);
    arguments.erase(arguments.begin() + 1, arguments.begin() + 3001);
    Vector<char*> const& unbound = InContextAliasMgrBase::getUnboundArgs();
    std::cout << valueOf(output) << " "
              << std::equal(unbound.begin(), unbound.end(), arguments.begin(), arguments.end());
    // One by one, and in order too.
    for (int i = 0; i < 1000; ++i) {
        arguments.push_back("more " + std::to_string(i));
        char const* const more[] = {arguments.back().c_str()};
        int one = 1;
        vector = more;
        InInitMgr::getInstance().initialize(one, vector);
    }
    std::cout << std::equal(unbound.begin(), unbound.end(), arguments.begin(), arguments.end()) << "\n";
    stop();
    return 0;
}

TEST(InContextAliasMgr, whatManyOptionsLeaveKeepsItsOrder)
{
    expectOutput("manyOptions", "999 11\n");
}

VN_CHILD(tooLate)
{
    const Environment alias("VN_TEST_KEY", "declared in time");
    start();
    report("override", [] { Override("key", "description"); });
    report("argument", [] { Argument("key", "description"); });
    report("environment", [] { Environment("key", "description"); });
    report("default", [] { Default("key", "description"); });
    report("already defined", [] { Environment("VN_TEST_KEY", "description"); });
    report("clone", [&] { alias.clone(); });
    stop();
    report("after the end", [] { Default("key", "description"); });
    return 0;
}

TEST(InContextAlias, afterItsKindHasStartedNoneCanBeMade)
{
    const auto refused = [](char const* description, char const* key) {
        return std::string("Trying to do post initialization registration of context alias instance: '") +
               description + "' (key: " + key + ").\n";
    };
    expectOutput("tooLate",
                 "override: " + refused("description", "key") + "argument: " + refused("description", "key") +
                     "environment: " + refused("description", "key") + "default: " + refused("description", "key") +
                     "already defined: " + refused("description", "VN_TEST_KEY") +
                     "clone: " + refused("declared in time", "VN_TEST_KEY") +
                     "after the end: " + refused("description", "key"));
}

VN_CHILD(refusedLeavesNothing)
{
    {
        const Environment alias("VN_TEST_KEY", "d");
        report("second", [] { Environment("VN_TEST_KEY", "d"); });
    }
    report("third", [] { Environment("VN_TEST_KEY", "d"); });
    start();
    stop();
    return 0;
}

TEST(InContextAlias, refusedDeclarationLeavesNoKeyBehind)
{
    expectOutput("refusedLeavesNothing",
                 "second: Trying to re-create an already existing Context Alias: 'VN_TEST_KEY'.\nthird: ok\n");
}

// ---- options

VN_CHILD(options)
{
    const Argument verbose("v", "d");
    const Argument output("o:", "d");
    std::vector<char const*> arguments(argv, argv + argc);
    arguments[0] = "prog";
    int count = argc;
    char const* const* vector = arguments.data();
    InInitMgr::getInstance().initialize(count, vector);
    std::cout << "v[" << valueOf(verbose) << "] o[" << valueOf(output) << "] ";
    printUnbound();
    stop();
    std::cout << verbose.isValid() << output.isValid() << InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    return 0;
}

TEST(InContextAliasMgr, optionsTakeTheirArguments)
{
    const struct
    {
        char const* what;
        std::vector<std::string> arguments;
        char const* expected;
    } table[] = {
        {"none", {}, "v[(none)] o[(none)] prog "},
        {"options, an operand, another option", {"-v", "-o", "out", "file", "-x"}, "v[] o[out] prog file -x "},
        {"unknown letter", {"-v", "-q", "-o", "out"}, "v[] o[(none)] prog -q -o out "},
        {"end mark", {"--", "-v"}, "v[(none)] o[(none)] prog -v "},
        {"long word", {"-v", "--long", "-o", "x"}, "v[] o[(none)] prog -o x "},
        {"repeated option", {"-o", "a", "-ob"}, "v[(none)] o[b] prog "},
        {"together", {"-vo", "a", "b"}, "v[] o[a] prog b "},
        {"value missing", {"-v", "-o"}, "v[] o[] prog "},
        {"lone dash", {"-v", "-", "x"}, "v[] o[(none)] prog - x "},
        {"unknown letter behind a known one", {"-vq", "x"}, "v[] o[(none)] prog -vq x "},
        {"colon", {"-:", "-v"}, "v[] o[(none)] prog "},
        {"empty value", {"-o", "", "x"}, "v[(none)] o[] prog x "},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        const ChildRun run = Child("options").arguments(row.arguments).run();
        EXPECT_EQ(run.out, std::string(row.expected) + "\n000\n");
        EXPECT_EQ(run.err, "");
    }
}

VN_CHILD(noOptions)
{
    startWith({"prog", "-v", "--", "x"});
    printUnbound();
    stop();
    return 0;
}

TEST(InContextAliasMgr, withoutOptionsTheArgumentsStayWhole)
{
    expectOutput("noOptions", "prog -v -- x \n");
}

VN_CHILD(sharedLetter)
{
    const Argument plain("v", "d");
    const Argument withValue("v:", "d");
    startWith({"prog", "-v", "x", "y"});
    std::cout << "[" << valueOf(plain) << "][" << valueOf(withValue) << "]"
              << InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    stop();
    return 0;
}

TEST(InContextAliasMgr, keysOfOneLetterAreOneOption)
{
    // Which of the two gives the letter its colon depends on addresses; both have the same value in any case.
    const std::string out = Child("sharedLetter").run().out;
    EXPECT_TRUE(out == "[][]3\n" || out == "[x][x]2\n") << out;
}

VN_CHILD(oddKeys)
{
    const Argument empty("", "d");
    const Argument several("ab:", "d");
    startWith({"prog", "-a", "-b", "x"});
    std::cout << "[" << valueOf(empty) << "][" << valueOf(several) << "] ";
    printUnbound();
    stop();
    return 0;
}

TEST(InContextAliasMgr, oddKeysAreTakenAsTheyStand)
{
    expectOutput("oddKeys", "[(none)][] prog \n");
}

VN_CHILD(noArgumentsAtAll)
{
    const Argument option("v", "d");
    start();
    std::cout << valueOf(option) << InContextAliasMgrBase::getUnboundArgs().size() << "\n";
    return 0;
}

TEST(InContextAliasMgr, emptyArgumentVectorGivesNoOptionAValue)
{
    expectOutput("noArgumentsAtAll", "(none)0\n");
}

VN_CHILD(secondVector)
{
    const Argument option("v", "d");
    startWith({"prog", "x"});
    startWith({"prog", "-v"});
    std::cout << valueOf(option) << " ";
    printUnbound();
    stop();
    return 0;
}

TEST(InContextAliasMgr, secondVectorIsAddedWithoutParsing)
{
    expectOutput("secondVector", "(none) prog x prog -v \n");
}

// ---- diagnostics

VN_CHILD(dump)
{
    Default alias("key", "description");
    InContextAliasMgr<Default>::dump();
    start();
    InContextAliasMgr<Default>::dump();
    return 0;
}

TEST(InContextAliasMgr, dumpIsExactToTheByte)
{
    const std::string head =
        std::string("----\nContext aliases of type: : ") + typeid(InContextAliasMgr<Default>).name() + "\n";
    const std::string alias = "Key             : key\n     Description: description\n     Value      : ";
    const std::string expected = head + OwnSettings::defaults("(uninitialized)") + alias +
                                 "(uninitialized)\n----\n" + head + OwnSettings::defaults("0") + alias +
                                 "key\n----\n";
    EXPECT_EQ(OwnSettings::inOrder(Child("dump").without("VN_DEBUG_INITIALIZE").run().err),
              OwnSettings::inOrder(expected));
}
