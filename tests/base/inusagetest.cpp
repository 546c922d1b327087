#include <base/dbgbuildinfomgr.h>
#include <base/exinternalerror.h>
#include <base/inoptionparser.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>
#include <base/ossharedlib.h>

#include "buildinfo.h"
#include "expectchild.h"
#include "library.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

using namespace Vn;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::expectOutput;
using VnTest::NumberedPackage;
using VnTest::startWith;
using VnTest::stop;

using Override = InContextAlias<InInitOvr, 0>;
using Argument = InContextAlias<InInitArg, 1>;
using Environment = InContextAlias<InInitEnv, 1>;
using Default = InContextAlias<InInitDef, 0>;

namespace
{
class SettingsPackage : public NumberedPackage<1>
{
public:
    SettingsPackage() : NumberedPackage<1>("settings", {InInit<VnInit::initArg>::getType()}) {}
};

bool isColour(char const* text)
{
    return std::strcmp(text, "red") == 0 || std::strcmp(text, "blue") == 0;
}

/// What a small program declares.
struct Declarations
{
    SettingsPackage package;
    Argument depthOption{"d:", "-d LEVELS: how deep to look"};
    Environment depthVariable{"VN_TEST_DEPTH", "the same"};
    Default depthDefault{"3", "default"};
    InVariable<int> depth{"palette.depth", package, depthOption, depthVariable, depthDefault};

    Argument loudOption{"l", "-l: tell more"};
    Default loudDefault{"false", "default"};
    InVariable<bool> loud{"palette.loud", package, loudOption, loudDefault};

    Argument colourOption{"C:", "colour to begin with"};
    Environment colourVariable{"VN_TEST_COLOUR", "the same"};
    Default colourDefault{"red", "default"};
    InVariable<char const*> colour{"palette.colour", package, colourOption, colourVariable, colourDefault};

    Environment memoryVariable{"VN_TEST_MEMORY", "bytes that a picture may take"};
    Default memoryDefault{"65536", "default"};
    InVariable<int> memory{"palette.memory", package, memoryVariable, memoryDefault};

    Environment titleVariable{"VN_TEST_TITLE", "a text above the picture"};
    InVariable<char const*> title{"palette.title", package, titleVariable};
};

InUsage usageOf(Declarations const& declared)
{
    InUsage usage("Shows palettes.");
    usage.operands("FILE...", 1, 3).expect(declared.colour, "red or blue", isColour);
    return usage;
}

/// The messages for these arguments, one line each; the program's name is added.
std::string messagesOf(InUsage const& usage, std::vector<char const*> arguments)
{
    arguments.insert(arguments.begin(), "prog");
    arguments.push_back(nullptr);
    std::string text;
    for (InFault const& fault : usage.getFaults(static_cast<int>(arguments.size()) - 1, arguments.data()))
        text += fault.message + "\n";
    return text;
}

/// Calls handle() with the arguments of a child body, and tells what came of it.
int handleIn(InUsage const& usage, int argc, char** argv)
{
    if (std::optional<int> const end = usage.handle(argc, argv))
        return *end;
    std::cout << "goes on:";
    for (int i = 1; i < argc; ++i)
        std::cout << " " << argv[i];
    std::cout << (argv[argc] == nullptr ? "" : " and no end") << "\n";
    return 7;
}

Child child(char const* body, std::vector<std::string> arguments)
{
    Child one(body);
    one.arguments(std::move(arguments));
    for (char const* name : {"VN_TEST_DEPTH", "VN_TEST_COLOUR", "VN_TEST_MEMORY", "VN_TEST_TITLE", "COLUMNS",
                             "VN_DEBUG_INITIALIZE", "VN_BUILDINFO_NO_VALIDATE", "VN_BUILDINFO_CHECK_STAMPS"})
        one.without(name);
    return one;
}
}  // namespace

// ---- the usage text

constexpr char usageText[] = "prog [OPTION]... FILE...\n"
                             "Shows palettes.\n"
                             "\n"
                             "Options:\n"
                             "  -C TEXT      colour to begin with (VN_TEST_COLOUR, default red)\n"
                             "  -d LEVELS    how deep to look (VN_TEST_DEPTH, default 3)\n"
                             "  -l           tell more (default false)\n"
                             "  -h, --help   this text\n"
                             "  --graph      draw the packages\n"
                             "  --settings   each setting with its value, and where that comes from\n"
                             "  --version    the program and the libraries in it\n"
                             "\n"
                             "An option counts more than the variable in parentheses, and that more than the\n"
                             "default.\n"
                             "\n"
                             "Variables of the environment:\n"
                             "  VN_TEST_MEMORY   bytes that a picture may take (default 65536)\n"
                             "  VN_TEST_TITLE    a text above the picture\n"
                             "\n"
                             "Messages go to:\n"
                             "  events.log   all but times\n";

VN_CHILD(usageHandled)
{
    const Declarations declared;
    InUsage usage = usageOf(declared);
    bool wantsGraph = false;
    usage.word("--graph", "draw the packages", wantsGraph);
    usage.note("Messages go to:\n  events.log   all but times");
    std::memcpy(argv[0], "prog", 5);
    return handleIn(usage, argc, argv);
}

TEST(InUsage, helpTellsOptionsVariablesAndDefaultsInColumns)
{
    for (std::vector<std::string> const& arguments : {std::vector<std::string>{"-h"},
                                                      {"--help"},
                                                      {"-lh", "file"},
                                                      {"-q", "--help"},
                                                      {"-d", "x", "-h"},
                                                      {"file", "-h"},
                                                      {"file", "--help"},
                                                      {"a", "b", "c", "d", "--help"}}) {
        const ChildRun run = child("usageHandled", arguments).run();
        EXPECT_EQ(run.out, usageText) << arguments[0];
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.exitCode, 0);
    }
}

TEST(InUsage, noLineOfHelpIsAsWideAsTheTerminal)
{
    for (int columns : {40, 41, 57, 80, 133, 400}) {
        std::istringstream lines(child("usageHandled", {"-h"}).with("COLUMNS", std::to_string(columns)).run().out);
        std::size_t longest = 0;
        for (std::string line; std::getline(lines, line);)
            longest = std::max(longest, line.size());
        EXPECT_LT(longest, static_cast<std::size_t>(columns));
        EXPECT_GT(longest, std::min<std::size_t>(static_cast<std::size_t>(columns), 80) - 15);
    }
    EXPECT_EQ(child("usageHandled", {"-h"}).with("COLUMNS", "3").run().out,
              child("usageHandled", {"-h"}).with("COLUMNS", "40").run().out);
}

#if !defined(_WIN32)
TEST(InUsage, helpFitsTheTerminalAndNotTheVariableThere)
{
    Child one = child("usageHandled", {"-h"});
    const std::string narrow = one.with("COLUMNS", "50").run().out;
    EXPECT_EQ(one.with("COLUMNS", "100").runOnTerminal(50).out, narrow);
    EXPECT_NE(one.with("COLUMNS", "100").run().out, narrow);
}
#endif

VN_CHILD(usageUnwritable)
{
    std::memcpy(argv[0], "prog", 5);
    std::cout.setstate(std::ios::badbit);
    return handleIn(InUsage(""), argc, argv);
}

TEST(InUsage, whatCantBeWrittenIsAFailure)
{
    for (char const* word : {"-h", "--settings", "--version"}) {
        const ChildRun run = child("usageUnwritable", {word}).run();
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err, "prog: the standard output can't be written\n");
    }
}

TEST(InUsage, aProgramsOwnHIsNoHelp)
{
    const SettingsPackage package;
    const Argument option("h:", "-h HEIGHT: rows");
    std::ostringstream text;
    const InUsage usage("");
    usage.print(text, "prog", 80);
    EXPECT_NE(text.str().find("  -h HEIGHT    rows\n"), std::string::npos) << text.str();
    EXPECT_NE(text.str().find("  --help       this text\n"), std::string::npos) << text.str();
    EXPECT_EQ(messagesOf(usage, {"-h", "5"}), "");
    EXPECT_EQ(messagesOf(usage, {"-h"}), "a value is missing behind -h\n");
}

TEST(InUsage, keysWithOneLetterAreOneOption)
{
    SettingsPackage package;
    const Argument option("o:", "-o FILE: output");
    const Argument other("o:2", "-o FILE: output");
    InVariable<char const*> first("a", package, option);
    InVariable<char const*> second("b", package, option, other);
    std::ostringstream text;
    InUsage("").print(text, "prog", 80);
    EXPECT_NE(text.str().find("Options:\n  -o FILE      output\n  -h, --help"), std::string::npos) << text.str();
}

TEST(InUsage, keysOfAnyFormHaveTheirPlace)
{
    SettingsPackage package;
    const Argument nothing("", "never asked for");
    const Argument digit("9", "-9: the ninth");
    const Argument brace("{x", "-{: no colon behind the letter, no value");
    const Argument bare("b", "");
    const Argument pause("p:", "how long to wait");
    const Default usual("3", "default"), same("3", "another default");
    InVariable<std::chrono::milliseconds> wait("wait", package, pause, usual);
    InVariable<int> twice("twice", package, pause, same);
    InVariable<int> unasked("unasked", package, nothing, usual);
    std::ostringstream text;
    InUsage("").print(text, "prog", 80);
    EXPECT_NE(text.str().find("Options:\n"
                              "  -9           the ninth\n"
                              "  -b\n"
                              "  -p TIME      how long to wait (default 3)\n"
                              "  -{           no colon behind the letter, no value\n"
                              "  -h, --help   "),
              std::string::npos)
        << text.str();
    EXPECT_EQ(text.str().find("unasked"), std::string::npos) << text.str();

    std::ostringstream page;
    InUsage("").printManPage(page, "a~b");
    EXPECT_NE(page.str().find(".TP\n\\fB\\-b\\fR\n\\&\n"), std::string::npos) << page.str();
    EXPECT_TRUE(page.str().starts_with(".TH \"A\\(tiB\" 1 ")) << "capitals, but for the name of a character\n"
                                                              << page.str();
}

TEST(InUsage, aCommandLineThatIsNotThereIsEmpty)
{
    for (int count : {0, 1, 3}) {
        int argc = count;
        EXPECT_EQ(InUsage("").handle(argc, nullptr), std::nullopt);
        EXPECT_EQ(argc, count);
        EXPECT_TRUE(InUsage("").getFaults(count, nullptr).empty());
    }
    EXPECT_EQ(InUsage("").operands("FILE", 1, 1).getFaults(3, nullptr).size(), 1u) << "and has no operands";
}

TEST(InUsage, anEmptyDefaultIsNotTold)
{
    SettingsPackage package;
    const Argument option("t:", "-t TITLE: what stands above");
    const Environment variable("VN_TEST_FOOT", "what stands below");
    const Default nothing("", "default");
    const InVariable<char const*> title("title", package, option, nothing);
    const InVariable<char const*> foot("foot", package, variable, nothing);
    std::ostringstream text;
    InUsage("").print(text, "prog", 80);
    EXPECT_NE(text.str().find("  -t TITLE     what stands above\n"), std::string::npos) << text.str();
    EXPECT_NE(text.str().find("  VN_TEST_FOOT   what stands below\n"), std::string::npos) << text.str();
}

TEST(InUsage, anOptionThatTheStartStopsAtIsUnknownEvenIfItIsDeclared)
{
    SettingsPackage package;
    const Argument mark("?", "-?: the parser's own answer to an unknown letter"), nothing("", "without a letter");
    const Argument loud("l", "-l: tell more");
    EXPECT_EQ(messagesOf(InUsage(""), {"-l"}), "");
    EXPECT_EQ(messagesOf(InUsage(""), {"-l?"}), "unknown option -? in -l?\n");
    EXPECT_EQ(messagesOf(InUsage(""), {"-?"}), "unknown option -?\n");
}

VN_CHILD(usageBehindAFailedStart)
{
    SettingsPackage package;
    package.onStart = [] { throw ExInternalError("src/base/x", 1, "no"); };
    const Environment variable("VN_TEST_DEPTH", "how deep to look");
    const InVariable<int> depth("depth", package, variable);
    const InUsage usage("");
    std::cout << messagesOf(usage, {});
    VnTest::report("start", VnTest::start);
    std::cout << messagesOf(usage, {});
    stop();
    std::cout << messagesOf(usage, {}) << "no more\n";
    return 0;
}

TEST(InUsage, aSettingWhoseSourceHasStoppedHasNoTextToFindFaultWith)
{
    const std::string fault = "VN_TEST_DEPTH takes a whole number, not 'deep'\n";
    EXPECT_EQ(child("usageBehindAFailedStart", {}).with("VN_TEST_DEPTH", "deep").run().out,
              fault + "start settings\nstart: no\n" + fault + "no more\n");
}

TEST(InUsage, aDescriptionThatSaysNothingLeavesTheSources)
{
    SettingsPackage package;
    const Argument option("w:", "");
    const Environment variable("VN_TEST_WIDTH", "");
    const InVariable<std::chrono::milliseconds> setting("width", package, option, variable);
    std::ostringstream text;
    InUsage("").print(text, nullptr, 80);
    EXPECT_NE(text.str().find(" [OPTION]...\n"), std::string::npos) << "a program without a name\n" << text.str();
    EXPECT_NE(text.str().find("  -w TIME      (VN_TEST_WIDTH)\n"), std::string::npos) << text.str();
}

// ---- what is refused

TEST(InUsage, wrongCommandLinesAreToldElementByElement)
{
    const Declarations declared;
    const InUsage usage = usageOf(declared);
    const struct
    {
        std::vector<char const*> arguments;
        char const* messages;
    } table[] = {
        {{"f"}, ""},
        {{"-l", "-d", "5", "-d6", "-ld-7", "-C", "blue", "f", "g", "h"}, ""},
        {{"-q", "f"}, "unknown option -q\n"},
        {{"-lq", "f"}, "unknown option -q in -lq\n"},
        {{"-?", "f"}, "unknown option -?\n"},
        {{"-:", "f"}, "unknown option -:\n"},
        {{"-l:", "f"}, "unknown option -: in -l:\n"},
        {{"--bogus", "f"}, "unknown option --bogus\n"},
        {{"--hel", "f"}, "unknown option --hel\n"},
        {{"--help=x", "f"}, "unknown option --help=x\n"},
        {{"-\xc3\xa9", "f"}, "unknown option -\xc3\xa9\n"},
        {{"-l\xc3\xa9", "f"}, "unknown option -l\xc3\xa9\n"},
        {{"-\x1b[2J", "f"}, "unknown option -\\x1b in -\\x1b[2J\n"},
        {{"--a\nb", "f"}, "unknown option --a\\nb\n"},
        {{"-q", "--bogus", "-d", "x", "f"},
         "unknown option -q\nunknown option --bogus\n-d takes a whole number, not 'x'\n"},
        {{"f", "-d"}, "-d stands behind 'f'; options come first, and behind -- everything is an operand\n"},
        {{"f", "--version"},
         "--version stands behind 'f'; options come first, and behind -- everything is an operand\n"},
        {{"-d"}, "a value is missing behind -d\nFILE... is missing\n"},
        {{"-ld"}, "a value is missing behind -d\nFILE... is missing\n"},
        {{"-d", nullptr, "f"}, "-d takes a whole number, not ''\n"},
        {{nullptr, nullptr, nullptr, nullptr}, "unexpected argument ''\n"},
        {{"-d", "--", "f"}, "-d takes a whole number, not '--'\n"},
        {{"-d", "", "f"}, "-d takes a whole number, not ''\n"},
        {{"-d", "12abc", "f"}, "-d takes a whole number, not '12abc'\n"},
        {{"-d", "1.5", "f"}, "-d takes a whole number, not '1.5'\n"},
        {{"-d", "5 x", "f"}, "-d takes a whole number, not '5 x'\n"},
        {{"-d", " +5 ", "f"}, ""},
        {{"-d", "2147483647", "-d-2147483648", "f"}, ""},
        {{"-d", "2147483648", "f"}, "-d takes a whole number, and '2147483648' is beyond its limits\n"},
        {{"-d", "-99999999999999999999", "f"},
         "-d takes a whole number, and '-99999999999999999999' is beyond its limits\n"},
        {{"-d", "x", "-d", "5", "f"}, "-d takes a whole number, not 'x'\n"},
        {{"-C", "green", "f"}, "-C takes red or blue, not 'green'\n"},
        {{"-C", "a\x1b]0;b\a", "f"}, "-C takes red or blue, not 'a\\x1b]0;b\\x07'\n"},
        {{}, "FILE... is missing\n"},
        {{"--"}, "FILE... is missing\n"},
        {{"-"}, ""},
        {{"--", "-q", "--bogus"}, ""},
        {{"a", "b", "c", "d"}, "unexpected argument 'd'\n"},
        {{"--", "a", "b", "c", "-d"}, "unexpected argument '-d'\n"},
        {{"", "\n"}, ""},
    };
    for (auto const& row : table) {
        std::string shown;
        for (char const* argument : row.arguments)
            shown += std::string(" ") + (argument != nullptr ? argument : "(null)");
        EXPECT_EQ(messagesOf(usage, row.arguments), row.messages) << shown;
    }
}

TEST(InUsage, eachFaultHasItsKindAndSubject)
{
    const Declarations declared;
    const InUsage usage = usageOf(declared);
    const char* const arguments[] = {"prog", "--bogus", "-lq", "-d", "x", "a", "-d"};
    const std::vector<InFault> faults = usage.getFaults(7, arguments);
    ASSERT_EQ(faults.size(), 4u);
    const std::pair<InFault::Kind, char const*> expected[] = {{InFault::UnknownOption, "--bogus"},
                                                              {InFault::UnknownOption, "-q"},
                                                              {InFault::WrongValue, "-d"},
                                                              {InFault::WrongOperand, "-d"}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(faults[i].kind, expected[i].first);
        EXPECT_EQ(faults[i].subject, expected[i].second);
    }
    const char* const missing[] = {"prog", "-d"};
    EXPECT_EQ(usage.getFaults(2, missing).at(0).kind, InFault::MissingValue);
}

TEST(InUsage, aWrongValueIsToldByTheRuleThatItBreaks)
{
    SettingsPackage package;
    const Argument loudOption("l:", "-l WHETHER: tell more");
    const Argument depthOption("d:", "-d LEVELS: how deep to look");
    const InVariable<bool> loud("loud", package, loudOption);
    const InVariable<int> depth("depth", package, depthOption);
    InUsage usage("");
    usage.expect(depth, "a small number", [](char const* text) { return std::strlen(text) == 1; })
        .expect(depth, "an even number", [](char const* text) { return (text[0] - '0') % 2 == 0; });
    EXPECT_EQ(messagesOf(usage, {"-l", "maybe"}), "-l takes true or false, not 'maybe'\n");
    EXPECT_EQ(messagesOf(usage, {"-d", "13"}), "-d takes a small number, not '13'\n") << "the first of two";
    EXPECT_EQ(messagesOf(usage, {"-d", "3"}), "-d takes an even number, not '3'\n");
    EXPECT_EQ(messagesOf(usage, {"-d", "4"}), "");
    EXPECT_EQ(messagesOf(InUsage(""), {"-d", "+99999999999"}),
              "-d takes a whole number, and '+99999999999' is beyond its limits\n");
}

TEST(InUsage, aProgramsOwnHIsNoHelpBehindAnOperand)
{
    InUsage usage("");
    usage.operands("[FILE]");
    EXPECT_EQ(messagesOf(usage, {"f", "-h"}), "") << "help is given";
    const Argument option("h", "-h: high");
    EXPECT_EQ(messagesOf(usage, {"f", "-h"}),
              "-h stands behind 'f'; options come first, and behind -- everything is an operand\n");
}

TEST(InUsage, withoutAWordOnOperandsThereAreNone)
{
    EXPECT_EQ(messagesOf(InUsage(""), {"a"}), "unexpected argument 'a'\n");
    EXPECT_EQ(messagesOf(InUsage(nullptr).operands("[FILE]..."), {"a", "b"}), "");
    EXPECT_EQ(messagesOf(InUsage("").operands("A B", 2, 2), {"a"}), "A B is missing\n");
}

TEST(InUsage, noArgumentsAtAllAreNoFault)
{
    const InUsage usage("");
    EXPECT_TRUE(usage.getFaults(0, nullptr).empty());
    EXPECT_TRUE(usage.getFaults(5, nullptr).empty());
    EXPECT_TRUE(usage.getFaults(-1, nullptr).empty());
    char const* const none[] = {nullptr};
    EXPECT_TRUE(usage.getFaults(1, none).empty());
    int argc = 0;
    EXPECT_FALSE(usage.handle(argc, nullptr));
}

VN_CHILD(environmentRefused)
{
    const Declarations declared;
    return handleIn(usageOf(declared), argc, argv);
}

TEST(InUsage, aVariableIsRefusedIfItsTextWouldWin)
{
    const auto errorsOf = [](Child const& one) {
        const std::string err = one.run().err;
        return err.substr(err.find(": ") + 2, err.find("; ") - err.find(": ") - 2);
    };
    EXPECT_EQ(errorsOf(child("environmentRefused", {"f"}).with("VN_TEST_DEPTH", "deep")),
              "VN_TEST_DEPTH takes a whole number, not 'deep'");
    EXPECT_EQ(errorsOf(child("environmentRefused", {"f"}).with("VN_TEST_MEMORY", "64k")),
              "VN_TEST_MEMORY takes a whole number, not '64k'");
    EXPECT_EQ(errorsOf(child("environmentRefused", {"f"})
                           .with("VN_TEST_COLOUR", "gr\x1b"
                                                   "een")),
              "VN_TEST_COLOUR takes red or blue, not 'gr\\x1been'");
    const ChildRun beaten = child("environmentRefused", {"-d", "5", "f"}).with("VN_TEST_DEPTH", "deep").run();
    EXPECT_EQ(beaten.exitCode, 7) << beaten.err;
    EXPECT_EQ(beaten.out, "goes on: -d 5 f\n");
}

TEST(InUsage, variablesOfTheLibraryItselfAreNotRefused)
{
    // An empty variable is none on Windows.
    for (char const* text : {"", "yes", "1 "}) {
        const ChildRun run = child("environmentRefused", {"f"}).with("VN_BUILDINFO_NO_VALIDATE", text).run();
        EXPECT_EQ(run.exitCode, 7) << run.err;
        EXPECT_EQ(run.out, "goes on: f\n");
    }
}

VN_CHILD(overriddenEnvironment)
{
    const Declarations declared;
    InVariableBase::overrideViaHandle("palette.depth", "9", "test");
    return handleIn(usageOf(declared), argc, argv);
}

TEST(InUsage, aVariableThatAnOverrideBeatsIsNotLookedAt)
{
    EXPECT_EQ(child("overriddenEnvironment", {"f"}).with("VN_TEST_DEPTH", "deep").run().exitCode, 7);
}

TEST(InUsage, oneLineOnStandardErrorEndsInAHint)
{
    const ChildRun run = child("usageHandled", {"-q\n", "--bogus", "f"}).run();
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "prog: unknown option -q in -q\\n; prog -h tells more\n");
    EXPECT_EQ(run.exitCode, 2);
}

VN_CHILD(ownH)
{
    const Argument option("h", "-h: high");
    std::memcpy(argv[0], "prog", 5);
    return handleIn(InUsage(""), argc, argv);
}

TEST(InUsage, theHintIsTheOneThatHelps)
{
    EXPECT_EQ(child("ownH", {"-q"}).run().err, "prog: unknown option -q; prog --help tells more\n");
    EXPECT_EQ(child("ownH", {"-h"}).run().out, "goes on: -h\n");
    EXPECT_EQ(child("ownH", {"--help"}).run().exitCode, 0);
}

/// Whatever is refused or taken, the start would have read the options alike.
TEST(InUsage, agreesWithTheStartOnEveryCommandLine)
{
    const Declarations declared;
    InUsage usage("");
    usage.operands("[FILE]...");
    std::mt19937 random(7);
    constexpr char letters[] = "-ldCqh:5 xa";
    int right = 0;
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::string> texts = {"prog"};
        for (auto i = random() % 5; i > 0; --i) {
            std::string text;
            for (auto j = random() % 5; j > 0; --j)
                text += letters[random() % (sizeof letters - 1)];
            texts.push_back(random() % 3 == 0 ? "-" + text : text);
        }
        std::vector<char*> pointers;
        for (std::string& text : texts)
            pointers.push_back(text.data());
        const int count = static_cast<int>(pointers.size());
        const bool isRight = usage.getFaults(count, pointers.data()).empty();
        std::string depth = "3", colour = "red", loud = "false";
        InOptionParser parser(count, pointers.data(), "C:d:l");
        bool isKnown = true;
        for (int option = parser.getOption(); option != -1; option = parser.getOption()) {
            std::string* const value = option == 'C'   ? &colour
                                       : option == 'd' ? &depth
                                       : option == 'l' ? &loud
                                                       : nullptr;
            isKnown = isKnown && value != nullptr;
            if (!isKnown)
                break;
            *value = parser.getValue() != nullptr ? parser.getValue() : "";
        }
        if (!isRight)
            continue;
        ++right;
        ASSERT_TRUE(isKnown || std::any_of(texts.begin(), texts.end(), [](std::string const& text) {
                        return text.starts_with("-") && text.find('h') != text.npos;
                    }));
        if (!isKnown)
            continue;
        for (InSetting const& setting : InUsage::getSettings(count, pointers.data())) {
            const std::map<std::string, std::string> expected = {
                {"palette.depth", depth}, {"palette.colour", colour}, {"palette.loud", loud}};
            const auto found = expected.find(setting.handle);
            if (found != expected.end()) {
                ASSERT_EQ(setting.value, found->second);
            }
        }
    }
    EXPECT_GT(right, 1000) << "or nothing was compared";
}

// ---- words

VN_CHILD(words)
{
    bool first = true, second = true;
    InUsage usage("");
    usage.operands("[FILE]...").word("--first", "", first).word("--second", "", second).word("-perf LIST", "");
    const Argument option("l", "");
    const Argument value("o:", "");
    const int code = handleIn(usage, argc, argv);
    std::cout << first << second << "\n";
    return code;
}

TEST(InUsage, boundWordsAreTakenOutOfTheArguments)
{
    const struct
    {
        std::vector<std::string> arguments;
        char const* out;
    } table[] = {
        {{}, "goes on:\n00\n"},
        {{"--first"}, "goes on:\n10\n"},
        {{"-l", "--second", "-l", "file"}, "goes on: -l -l file\n01\n"},
        {{"--second", "--first", "--second", "-l", "a"}, "goes on: -l a\n11\n"},
        {{"-o", "--first", "a"}, "goes on: -o --first a\n00\n"},
        {{"--first", "--", "--second"}, "goes on: -- --second\n10\n"},
        {{"-l", "-perf", "list", "-q", "--first"}, "goes on: -l -perf list -q --first\n00\n"},
    };
    for (auto const& row : table) {
        const ChildRun run = child("words", row.arguments).run();
        EXPECT_EQ(run.out, row.out);
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.exitCode, 7);
    }
    EXPECT_EQ(child("words", {"--firs"}).run().exitCode, 2);
}

VN_CHILD(noOptionsDeclared)
{
    InUsage usage("");
    bool isFirst = false;
    usage.operands("[NAME]...").word("--first", "the first", isFirst);
    return handleIn(usage, argc, argv);
}

TEST(InUsage, theEndMarkIsTakenOutWhereNoOptionIsDeclared)
{
    EXPECT_EQ(child("noOptionsDeclared", {"--", "a", "--", "-b"}).run().out, "goes on: a -- -b\n");
    EXPECT_EQ(child("noOptionsDeclared", {"--"}).run().out, "goes on:\n");
    EXPECT_EQ(child("noOptionsDeclared", {"--first", "--first", "--", "--first"}).run().out, "goes on: --first\n");
    EXPECT_EQ(child("noOptionsDeclared", {"a", "b"}).run().out, "goes on: a b\n");
}

VN_CHILD(calledAs)
{
    std::string name = argv[1];
    char word[] = "-q";
    char* arguments[] = {name.data(), word, nullptr};
    return handleIn(InUsage(""), 2, arguments);
}

TEST(InUsage, aProgramIsNamedAsPeopleCallIt)
{
    const struct
    {
        char const* path;
        char const* name;
    } table[] = {
        {"swatch", "swatch"},
        {"/usr/bin/swatch", "swatch"},
        {"C:\\tools\\swatch.exe", "swatch"},
        {"../swatch.com", "swatch.com"},
        {"bin/.exe", ".exe"},
        {"bin/", "program"},
    };
    for (auto const& row : table)
        EXPECT_EQ(child("calledAs", {row.path}).run().err,
                  std::string(row.name) + ": unknown option -q; " + row.name + " -h tells more\n");
}

// ---- settings and versions

TEST(InUsage, settingsAreToldWithTheSourceThatWins)
{
    const ChildRun run = child("usageHandled", {"-l", "--settings", "-d", "7", "file"})
                             .with("VN_TEST_DEPTH", "5")
                             .with("VN_TEST_COLOUR", "blue")
                             .with("VN_TEST_MEMORY", "12")
                             .run();
    EXPECT_EQ(run.out, "  palette.colour                                'blue'  environment VN_TEST_COLOUR\n"
                       "  palette.depth                                 7       option -d\n"
                       "  palette.loud                                  true    option -l\n"
                       "  palette.memory                                12      environment VN_TEST_MEMORY\n"
                       "  palette.title                                 none\n"
                       "  Vn::Tessola::debugging::buildInfoCheckStamps  0       default\n"
                       "  Vn::Tessola::debugging::buildInfoNoValidate   0       default\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(child("usageHandled", {"--settings", "-q", "file"}).run().exitCode, 2);
    EXPECT_EQ(child("usageHandled", {"--settings", "-d", "x"}).run().exitCode, 2);
    EXPECT_EQ(child("usageHandled", {"--settings"}).run().exitCode, 0) << "without the operand, too";
}

TEST(InUsage, textsOfSettingsAreShownAndNotObeyed)
{
    const ChildRun run = child("usageHandled", {"--settings", "file"}).with("VN_TEST_TITLE", "a\x1b[2Jb\nc").run();
    EXPECT_NE(run.out.find("  'a\\x1b[2Jb\\nc'  environment VN_TEST_TITLE\n"), std::string::npos) << run.out;
}

TEST(InUsage, blanksAroundNumbersAreShownAndNotObeyed)
{
    const ChildRun run = child("usageHandled", {"--settings", "-d", "\n5\r", "file"}).run();
    EXPECT_NE(run.out.find("  \\n5\\r  option -d\n"), std::string::npos) << run.out;
}

VN_CHILD(oddDefault)
{
    SettingsPackage package;
    Default usual("3 levels", "default");
    const InVariable<int> depth("palette.depth", package, usual);
    return handleIn(InUsage(""), argc, argv);
}

TEST(InUsage, aTextThatIsNoWholeNumberStandsInQuotes)
{
    const ChildRun run = child("oddDefault", {"--settings"}).run();
    EXPECT_TRUE(std::regex_search(run.out, std::regex("^  palette\\.depth +'3 levels' +default\n"))) << run.out;
}

TEST(InUsage, theRanksAreToldIfAnOptionHasAVariable)
{
    const auto tellsRanks = [](InUsage const& usage) {
        std::ostringstream stream;
        usage.print(stream, "prog", 80);
        return stream.str().find("counts more than the variable") != std::string::npos;
    };
    SettingsPackage package;
    Argument option("d:", "-d LEVELS: how deep to look");
    Default usual("3", "default");
    const InVariable<int> depth("palette.depth", package, option, usual);
    EXPECT_FALSE(tellsRanks(InUsage("")));
    Environment variable("VN_TEST_WIDTH", "the same");
    const InVariable<int> width("palette.width", package, option, variable);
    EXPECT_TRUE(tellsRanks(InUsage("")));
}

void printOwn(int argc, char const* const* argv)
{
    for (InSetting const& setting : InUsage::getSettings(argc, argv))
        if (setting.handle.starts_with("palette."))
            std::cout << setting.handle.substr(8) << " " << setting.hasValue << " " << setting.value << " "
                      << setting.source << "\n";
}

VN_CHILD(settingsBeforeAndAfter)
{
    const Declarations declared;
    InVariableBase::overrideViaHandle("palette.loud", "no", "test");
    printOwn(argc, argv);
    startWith({"prog", "-d", "8", "-C", "blue"});
    printOwn(0, nullptr);
    stop();
    std::cout << "after\n";
    printOwn(0, nullptr);
    return 0;
}

TEST(InUsage, whatTheStartWillChooseIsToldBeforeIt)
{
    const std::string same = "colour 1 blue option -C\ndepth 1 8 option -d\nloud 1 no override\n"
                             "memory 1 12 environment VN_TEST_MEMORY\ntitle 0  \n";
    const ChildRun run =
        child("settingsBeforeAndAfter", {"-d", "8", "-C", "blue"}).with("VN_TEST_MEMORY", "12").run();
    EXPECT_EQ(run.out, same + "start settings\n" + same + "stop settings\nafter\n" +
                           "colour 1 red default\ndepth 1 3 default\nloud 1 no override\n"
                           "memory 1 12 environment VN_TEST_MEMORY\ntitle 0  \n");
    EXPECT_EQ(run.err, "");
}

VN_CHILD(version)
{
    static constexpr VnTest::BuildFacts facts;
    if (std::strcmp(argv[argc - 1], "known") == 0)
        DbgBuildInfoMgr::registerAppInfo(VnTest::ownedInfo(facts));
    std::memcpy(argv[0], "prog", 5);
    return handleIn(InUsage("").operands("[X]"), argc, argv);
}

TEST(InUsage, versionTellsTheProgramAndTheLibrariesWithoutAStart)
{
    const std::string libraries = "libVNbase 0.2 pre-alpha (P. 187, date)\n";
    const auto withoutDate = [](std::string const& out) {
        return std::regex_replace(out, std::regex("[A-Z][a-z]{2} [ 0-9]{2} [0-9]{4}"), "date");
    };
    const ChildRun nameless = child("version", {"--version"}).with("VN_DEBUG_INITIALIZE", "1").run();
    EXPECT_EQ(withoutDate(nameless.out), "prog\n" + libraries);
    EXPECT_EQ(nameless.err.find("performInitialize"), std::string::npos) << nameless.err;
    EXPECT_EQ(nameless.exitCode, 0);
    EXPECT_EQ(child("version", {"-q", "--version"}).run().out, nameless.out) << "whatever else is wrong";
    EXPECT_EQ(withoutDate(child("version", {"--version", "known"}).run().out),
              "Api 1.2 beta (P. 1, Aug 27)\n" + libraries);
}

VN_CHILD(versionOfBadLibraries)
{
    const VnTest::Library noEntry("VNtestnoentry"), nullInfo("VNtestnullinfo"), throwing("VNtestthrowinginfo");
    std::memcpy(argv[0], "prog", 5);
    return handleIn(InUsage(""), argc, argv);
}

TEST(InUsage, versionNamesLibrariesThatTellNothingOfThemselves)
{
    const ChildRun run = child("versionOfBadLibraries", {"--version"}).run();
    const std::string suffix = OsSharedLib::getSuffix();
    EXPECT_NE(run.out.find("\nlibVNtestnullinfo" + suffix + " (tells nothing of itself)\n"), std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("\nlibVNtestthrowinginfo" + suffix + " (thrown by the library)\n"), std::string::npos)
        << run.out;
    EXPECT_EQ(run.out.find("noentry"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("libVNbase 0.2"), run.out.rfind("libVNbase 0.2")) << "once, though others depend on it";
    EXPECT_EQ(run.exitCode, 0);
}

TEST(InUsage, copiesAreIndependent)
{
    InUsage first("One.");
    InUsage second(first);
    second.note("Two.");
    std::ostringstream text;
    first.print(text, "prog", 80);
    EXPECT_EQ(text.str().find("Two."), std::string::npos);
    first = second;
    first.print(text, "prog", 80);
    EXPECT_NE(text.str().find("Two."), std::string::npos);
}

// ---- the man page, and the completion

constexpr char manPage[] = R"(.TH "HELLO" 1 "" "Api 1.2"
.SH NAME
hello \- shows palettes
.SH SYNOPSIS
\fBhello\fR [\fIOPTION\fR]...
FILE...
.SH DESCRIPTION
Shows palettes.
.SH OPTIONS
.TP
\fB\-C\fR \fITEXT\fR
colour to begin with (VN_TEST_COLOUR, default red)
.TP
\fB\-d\fR \fILEVELS\fR
how deep to look (VN_TEST_DEPTH, default 3)
.TP
\fB\-l\fR
tell more (default false)
.TP
\fB\-h,\fR \fB\-\-help\fR
this text
.TP
\fB\-\-settings\fR
each setting with its value, and where that comes from
.TP
\fB\-\-version\fR
the program and the libraries in it
.PP
An option counts more than the variable in parentheses, and that more than the
default.
.SH ENVIRONMENT
.TP
\fIVN_TEST_COLOUR\fR
what \-C sets, where that isn\(aqt given
.TP
\fIVN_TEST_DEPTH\fR
what \-d sets, where that isn\(aqt given
.TP
\fIVN_TEST_MEMORY\fR
bytes that a picture may take (default 65536)
.TP
\fIVN_TEST_TITLE\fR
a text above the picture
.SH NOTES
Messages go to:
.TP
\fIevents.log\fR
all but times
.PP
\&.hidden files in \(dqC:\eTEMP\(dq aren\(aqt `\-ones.
)";

VN_CHILD(pages)
{
    static constexpr VnTest::BuildFacts facts;
    DbgBuildInfoMgr::registerAppInfo(VnTest::ownedInfo(facts));
    const Declarations declared;
    InUsage usage = usageOf(declared);
    usage.note("Messages go to:\n  events.log   all but times\n.hidden files in \"C:\\TEMP\" aren't `-ones.");
    std::memcpy(argv[0], "prog", 5);
    return handleIn(usage, argc, argv);
}

TEST(InUsage, theManPageHasWhatHelpHas)
{
    std::string expected = manPage;
    expected.replace(expected.find('`'), 1, "\\(ga");
    const ChildRun run = child("pages", {"--help=man:hello"}).run();
    EXPECT_EQ(run.out, expected);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
    const std::string own = child("pages", {"--help=man"}).run().out;
    EXPECT_EQ(own.substr(0, own.find('\n')), ".TH \"PROG\" 1 \"\" \"Api 1.2\"");
}

TEST(InUsage, aSummaryFollowsTheProgramsNameWithASmallLetterUnlessItBeginsWithAnAbbreviation)
{
    const struct
    {
        char const* summary;
        char const* line;
    } table[] = {{"Greets somebody.", "prog \\- greets somebody"},
                 {"X", "prog \\- x"},
                 {"GPU tables.", "prog \\- GPU tables"},
                 {"[Greets]", "prog \\- [Greets]"},
                 {"already small", "prog \\- already small"}};
    for (auto const& row : table) {
        std::ostringstream page;
        InUsage(row.summary).printManPage(page, "prog");
        EXPECT_NE(page.str().find(std::string("\n") + row.line + "\n"), std::string::npos) << page.str();
    }
}

TEST(InUsage, theManPageIsOfTheLibrarysDayWhereTheApplicationTellsNone)
{
    std::ostringstream page;
    InUsage(nullptr).printManPage(page, nullptr);
    EXPECT_TRUE(std::regex_search(page.str(), std::regex("^\\.TH \"\" 1 \"20[0-9]{2}-[01][0-9]-[0-3][0-9]\" "
                                                         "\"libVNbase 0\\.2\"\n")))
        << page.str();
}

TEST(InUsage, noTextOfADeclarationIsARequestOfAManPage)
{
    SettingsPackage package;
    Argument option("x:", "FILE: .so \\fB/etc/passwd\n.so '\\n");
    Default usual("a\n.so b", "default");
    const InVariable<char const*> setting("x", package, option, usual);
    InUsage usage(".so\n'so\x1b[2J");
    usage.operands("'FILE .so").word("--so", ".so").note("'so\n .so  'so\n\n");
    std::ostringstream page;
    usage.printManPage(page, ".so\n.so");
    std::istringstream lines(page.str());
    for (std::string line; std::getline(lines, line);) {
        EXPECT_FALSE(line.starts_with("'") || line.starts_with(".so")) << line;
        EXPECT_LT(line.size(), 80u);
        EXPECT_EQ(line.find('\x1b'), line.npos);
    }
    EXPECT_NE(page.str().find("\\efB/etc/passwd"), std::string::npos) << page.str();
}

VN_CHILD(pageNames)
{
    std::memcpy(argv[0], "prog", 5);
    return handleIn(InUsage("").operands("[X]"), argc, argv);
}

TEST(InUsage, aPageIsAskedForByItsNameAlone)
{
    const auto firstLine = [](std::vector<std::string> const& arguments) {
        const ChildRun run = child("pageNames", arguments).run();
        return run.err + run.out.substr(0, run.out.find('\n'));
    };
    const std::string completion = "# Completion of prog for bash, made of the program's own declarations.";
    EXPECT_EQ(firstLine({"--help=bash"}), completion);
    EXPECT_EQ(firstLine({"-q", "--version", "--help=bash"}), completion) << "whatever else is wrong";
    EXPECT_EQ(firstLine({"--help=bash:a b"}),
              "# Completion of a b for bash, made of the program's own declarations.");
    EXPECT_EQ(firstLine({"--help=bash", "-h"}), "prog [OPTION]... [X]");
    for (std::string const word : {"--help=", "--help=man:", "--help=bash:", "--help=manual", "--help=zsh"})
        EXPECT_EQ(firstLine({word}), "prog: unknown option " + word + "; prog -h tells more\n");
    EXPECT_EQ(firstLine({"--", "--help=man"}), "goes on: --help=man") << "an operand";
    EXPECT_NE(firstLine({"x", "--help=man"}).find("--help=man stands behind 'x'"), std::string::npos);
}

VN_CHILD(unwritablePages)
{
    std::memcpy(argv[0], "prog", 5);
    std::cout.setstate(std::ios::badbit);
    return handleIn(InUsage(""), argc, argv);
}

TEST(InUsage, aPageThatCantBeWrittenIsAFailure)
{
    for (char const* word : {"--help=man", "--help=bash"}) {
        const ChildRun run = child("unwritablePages", {word}).run();
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err, "prog: the standard output can't be written\n");
    }
}

namespace
{
/// What the completion has for a state, without the walk that leads there.
std::string casesOf(InUsage const& usage, char const* program = "prog")
{
    std::ostringstream text;
    usage.printBashCompletion(text, program);
    return text.str().substr(text.str().find("    case $state in\n"));
}
}  // namespace

TEST(InUsage, theCompletionOffersTheWordsThatAreRight)
{
    const Declarations declared;
    SettingsPackage package;
    Argument quiet("Q:", "-Q ANSWER: quiet");
    const InVariable<bool> isQuiet("quiet", package, quiet);
    const Argument folder("O:", "-O OUTDIR: output");
    bool wantsGraph = false;
    InUsage usage = usageOf(declared);
    usage.word("--graph", "", wantsGraph);
    EXPECT_EQ(casesOf(usage, "my prog"), R"(    case $state in
    option)
        for word in '-C' '-d' '-l' '-O' '-Q' '-h' '--help' '--graph' '--settings' '--version'; do
            [[ $word != "$current"* ]] || COMPREPLY+=("$word")
        done
        ;;
    '-C')
        for word in 'red' 'blue'; do
            [[ $word != "$current"* ]] || COMPREPLY+=("$word")
        done
        ;;
    '-d')
        ;;
    '-O')
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
        ;;
    '-Q')
        for word in 'true' 'false'; do
            [[ $word != "$current"* ]] || COMPREPLY+=("$word")
        done
        ;;
    *)
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        ;;
    esac
}
complete -o filenames -F _my_prog 'my prog'
)");
    EXPECT_NE(casesOf(InUsage("")).find("    *)\n        ;;\n"), std::string::npos)
        << "nothing where no operand may be";
}

TEST(InUsage, theCompletionOffersNoWordsWhereOneOfThemIsWrong)
{
    const Declarations declared;
    InUsage usage("");
    usage.expect(declared.colour, "red, blue or colourful", isColour);
    EXPECT_NE(casesOf(usage).find("    '-C')\n        mapfile "), std::string::npos) << casesOf(usage);
}

TEST(InUsage, noTextOfADeclarationIsACommandOfACompletion)
{
    InUsage usage("$(false)");
    usage.word("--it's$(false)", "").operands("$(false) FOLDER");
    const std::string cases = casesOf(usage, "a'b");
    EXPECT_NE(cases.find(" '--it'\\''s$(false)' "), std::string::npos) << cases;
    EXPECT_NE(cases.find("complete -o filenames -F _a_b 'a'\\''b'\n"), std::string::npos) << cases;
}
