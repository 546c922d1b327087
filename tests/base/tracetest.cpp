#include <base/trace.h>

#include "expectchild.h"
#include "expectthrow.h"
#include "testpackage.h"

#include <base/exinternalerror.h>
#include <base/osutils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using Vn::ExInternalError;
using Vn::Trace;
using Vn::TraceLevel;
using Vn::TraceManager;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::expectThrow;

namespace
{
/// Keeps what is printed; its trace writes a word before each line if it is told to.
class Keeper : public TraceManager
{
public:
    explicit Keeper(int priority = 100) : TraceManager(priority) {}

    Trace& getTrace() override { return _trace; }
    void print(char const* text) const override
    {
        if (isBroken)
            throw std::domain_error("no output");
        _lines.push_back(text);
    }

    std::vector<std::string> taken() const { return std::exchange(_lines, {}); }
    std::string takenLine() const
    {
        const std::vector<std::string> lines = taken();
        return lines.size() == 1 ? lines[0] : std::to_string(lines.size()) + " lines";
    }

    bool isBroken = false;  ///< lines are refused by an exception
    std::string word;
    void (*unsettle)(std::ostream& stream) = nullptr;  ///< called behind the word

private:
    class WordTrace : public Trace
    {
    public:
        explicit WordTrace(Keeper const& keeper) : _keeper(keeper) {}

    protected:
        void printPrefix(std::ostream& stream) override
        {
            stream << _keeper.word;
            if (_keeper.unsettle)
                _keeper.unsettle(stream);
        }

    private:
        Keeper const& _keeper;
    };

    mutable std::vector<std::string> _lines;
    WordTrace _trace{*this};
};

class TraceTest : public testing::Test
{
protected:
    TraceTest() { Trace::setOptions("reset"); }
    ~TraceTest() override { Trace::setOptions("reset"); }

    static bool isOn(char const* name) { return Trace::isEnabled(*Trace::registerLevel(name, nullptr)); }

    /// What a line of the level "Main" looks like.
    std::string line(char const* file = "/a/b/file.cpp", int number = 7)
    {
        std::ostringstream stream;
        keeper.getTrace().log(stream, file, number);
        return stream.str();
    }

    Keeper keeper;
    TraceLevel& level = *Trace::MainTraceLevel;
};

/// A function's entry with a fixed place.
#define ENTRY(FUNCTION) \
    const Trace::Entry FUNCTION##Entry(TraceManager::getInstance().getTrace(), level, #FUNCTION, "/a/b/file.cpp", 7)

std::string pidText()
{
    std::string text = std::to_string(Vn::OsUtils::getPid());
    text.resize(std::min<std::size_t>(text.size(), 9));
    return text + std::string(10 - text.size(), ' ');
}

constexpr int failed = 7;  // an abort is 3 on Windows

/// Prints what setOptions() throws.
void trySetOptions(char const* options)
{
    try {
        Trace::setOptions(options);
        std::cout << "fine\n";
    } catch (ExInternalError const& failure) {
        std::cout << failure.getReason() << '\n';
    }
}
}  // namespace

TEST_F(TraceTest, mainAndExceptionsAreOnAtFirst)
{
    EXPECT_TRUE(isOn("Main"));
    EXPECT_TRUE(isOn("Exceptions"));
    EXPECT_FALSE(isOn("Other"));
    EXPECT_TRUE(Trace::isEnabled(*Trace::MainTraceLevel));
    EXPECT_EQ(Trace::registerLevel("Main", nullptr), Trace::MainTraceLevel);
}

TEST_F(TraceTest, offIsOffForAllLevels)
{
    Trace::setOptions("show=Other,off");
    for (char const* name : {"Main", "Exceptions", "Other"})
        EXPECT_FALSE(isOn(name));
    Trace::setOptions("on");
    for (char const* name : {"Main", "Exceptions", "Other"})
        EXPECT_TRUE(isOn(name));
}

TEST_F(TraceTest, levelsOfATimeWithoutTracingAreOnOnceItIs)
{
    Trace::setOptions("off,show=all");
    EXPECT_FALSE(isOn("MadeWhileOff"));
    Trace::setOptions("show=SwitchedWhileOff");
    EXPECT_FALSE(isOn("SwitchedWhileOff"));
    Trace::setOptions("on,hide=Other");
    EXPECT_TRUE(isOn("MadeWhileOff"));
    EXPECT_TRUE(isOn("SwitchedWhileOff"));
    EXPECT_FALSE(isOn("Other"));
    // A text that ends in an exception has switched what stands before.
    EXPECT_THROW(Trace::setOptions("off,nonsense"), ExInternalError);
    EXPECT_FALSE(isOn("MadeWhileOff"));
    Trace::setOptions("off,on");
    EXPECT_TRUE(isOn("MadeWhileOff"));
}

TEST_F(TraceTest, showAndHideSwitchALevelAlsoBeforeItIsRegistered)
{
    Trace::setOptions("show=Early,hide=Main");
    TraceLevel const* const early = Trace::registerLevel("Early", __FILE__);
    EXPECT_TRUE(Trace::isEnabled(*early));
    EXPECT_FALSE(isOn("Main"));
    Trace::setOptions("hide=Early");
    EXPECT_FALSE(Trace::isEnabled(*early));
    EXPECT_EQ(Trace::registerLevel("Early", nullptr), early);
}

TEST_F(TraceTest, aLevelsNameIsCopied)
{
    std::string name = "Copied";
    TraceLevel const* const level1 = Trace::registerLevel(name.c_str(), nullptr);
    name = "Other!";
    EXPECT_EQ(Trace::registerLevel("Copied", nullptr), level1);
}

TEST_F(TraceTest, allIsARuleForNewLevelsToo)
{
    Trace::registerLevel("Old", nullptr);
    Trace::setOptions("show=all");
    EXPECT_TRUE(isOn("Old"));
    EXPECT_TRUE(isOn("New 1"));
    Trace::setOptions("hide=all");
    EXPECT_FALSE(isOn("Old"));
    EXPECT_FALSE(isOn("Main"));
    EXPECT_FALSE(isOn("New 2"));
    Trace::setOptions("show=New 3");
    EXPECT_TRUE(isOn("New 3"));
    EXPECT_FALSE(isOn("New 4"));
    Trace::setOptions("reset");
    EXPECT_FALSE(isOn("New 5"));
    EXPECT_FALSE(isOn("New 1"));
    EXPECT_TRUE(isOn("Main"));
    Trace::setOptions("show=all,reset");
    EXPECT_FALSE(isOn("New 6"));
}

TEST_F(TraceTest, tokensOfOneTextActInTheirOrder)
{
    const struct
    {
        char const* options;
        bool isOldOn, isOtherOn, isNewOn, isMainOn;
    } table[] = {
        {"show=all,hide=Old", false, true, true, true},
        {"show=all,hide=Old,show=all", true, true, true, true},
        {"hide=Old,show=all", true, true, true, true},
        {"show=all,hide=all,show=Old", true, false, false, false},
        {"show=Old,hide=all,show=Other", false, true, false, false},
        {"hide=all,show=Old,hide=Old", false, false, false, false},
        {"show=all,reset,show=Other", false, true, false, true},
        {"show=Old,reset", false, false, false, true},
        {"hide=all,reset", false, false, false, true},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.options);
        Trace::setOptions("reset");
        Trace::registerLevel("Old", nullptr);
        Trace::registerLevel("Other", nullptr);
        Trace::setOptions(row.options);
        EXPECT_EQ(isOn("Old"), row.isOldOn);
        EXPECT_EQ(isOn("Other"), row.isOtherOn);
        EXPECT_EQ(isOn(("New for " + std::string(row.options)).c_str()), row.isNewOn);
        EXPECT_EQ(isOn("Main"), row.isMainOn);
    }
}

TEST_F(TraceTest, tokensBeforeAnUnknownOneHaveReachedAllLevels)
{
    Trace::registerLevel("Old", nullptr);
    EXPECT_THROW(Trace::setOptions("show=all,hide=Main,nonsense,hide=all"), ExInternalError);
    EXPECT_TRUE(isOn("Old"));
    EXPECT_FALSE(isOn("Main"));
}

TEST_F(TraceTest, tokensWithoutTheirValuesDoNothing)
{
    Trace::setOptions("fndirs=1,fnwidth=9,line");
    const std::string before = line();
    Trace::setOptions("show,hide,fndirs,fnwidth");
    EXPECT_EQ(line(), before);
    EXPECT_TRUE(isOn("Main"));
    Trace::setOptions("");
    Trace::setOptions(nullptr);
    Trace::setOptions("noindent,");
    Trace::setOptions("indent");
    EXPECT_EQ(line(), before);
}

TEST_F(TraceTest, anUnknownTokenIsNamed)
{
    const struct
    {
        char const* options;
        char const* reason;
    } table[] = {
        {"nonsense", "Unknown token \"nonsense\" in trace options."},
        {"hide=Main,nonsense=5,hide=Exceptions", "Unknown token \"nonsense\" in trace options."},
        {"ON", "Unknown token \"ON\" in trace options."},
        {" line", "Unknown token \" line\" in trace options."},
        {",", "Unknown token \"\" in trace options."},
        {"=", "Unknown token \"\" in trace options."},
    };
    for (auto const& row : table)
        expectThrow<ExInternalError, std::runtime_error>([&row] { Trace::setOptions(row.options); }, row.reason);
    EXPECT_FALSE(isOn("Main")) << "what came before has taken effect";
    EXPECT_TRUE(isOn("Exceptions"));
}

TEST_F(TraceTest, aLineHasFileAndNumberIfItIsAskedTo)
{
    EXPECT_EQ(line(), "| ");
    const struct
    {
        char const* options;
        char const* file;
        int number;
        char const* line;
    } table[] = {
        {"line", "/a/b/file.cpp", 7, "file.cpp             (   7) "},
        {"line", "file.cpp", 1234, "file.cpp             (1234) "},
        {"line", "file.cpp", 12345, "file.cpp             (12345) "},
        {"line", "a\\b\\file.cpp", 7, "a\\b\\file.cpp         (   7) "},
        {"line", "", 0, "                     (   0) "},
        {"line", "/a/b/", 7, "                     (   7) "},
        {"line,fndirs=1", "/a/b/file.cpp", 7, "b/file.cpp           (   7) "},
        {"line,fndirs=2", "/a/b/file.cpp", 7, "a/b/file.cpp         (   7) "},
        {"line,fndirs=3", "/a/b/file.cpp", 7, "/a/b/file.cpp        (   7) "},
        {"line,fndirs=2147483647", "/a/b/file.cpp", 7, "/a/b/file.cpp        (   7) "},
        {"line,fndirs=1,fndirs=-1", "/a/b/file.cpp", 7, "file.cpp             (   7) "},
        {"line,fndirs=1,fndirs=x", "/a/b/file.cpp", 7, "file.cpp             (   7) "},
        {"line,fnwidth=4", "/a/b/file.cpp", 7, "file (   7) "},
        {"line,fnwidth=8", "/a/b/file.cpp", 7, "file.cpp (   7) "},
        {"line,fnwidth=9", "/a/b/file.cpp", 7, "file.cpp  (   7) "},
        {"line,fnwidth=0", "/a/b/file.cpp", 7, " (   7) "},
        {"line,fnwidth=3,fnwidth=-5", "/a/b/file.cpp", 7, "file.cpp             (   7) "},
        {"line,fndirs=2147483648", "/a/b/file.cpp", 7, "/a/b/file.cpp        (   7) "},
        {"line,fndirs=99999999999", "/a/b/file.cpp", 7, "/a/b/file.cpp        (   7) "},
        {"line,fndirs=1,fndirs=-99999999999", "/a/b/file.cpp", 7, "file.cpp             (   7) "},
        {"line,noline", "/a/b/file.cpp", 7, ""},
    };
    for (auto const& row : table) {
        Trace::setOptions("reset,noindent");
        Trace::setOptions(row.options);
        EXPECT_EQ(line(row.file, row.number), row.line) << row.options << " " << row.file;
    }
}

TEST_F(TraceTest, anOptionChangesNothingButItsOwn)
{
    keeper.word = "word ";
    Trace::setOptions("pid,line,fndirs=1,fnwidth=10");
    for (char const* options : {"off", "on", "prefix", "line", "indent", "pid", "fndirs=1", "fnwidth=10",
                                "show=Main", "hide=Main", "printlevels"}) {
        Trace::setOptions(options);
        EXPECT_EQ(line(), pidText() + "word b/file.cpp (   7) | ") << options;
    }
    Trace::setOptions("reset,noindent,noprefix");
    for (char const* options : {"off", "on", "noprefix", "noline", "noindent", "nopid", "fndirs=0", "fnwidth=20",
                                "show=Main", "hide=Main"}) {
        Trace::setOptions(options);
        EXPECT_EQ(line(), "") << options;
    }
}

TEST_F(TraceTest, resetBringsBackWhatWasAtFirst)
{
    keeper.word = "word ";
    Trace::setOptions("off,noprefix,line,pid,noindent,fndirs=1,fnwidth=4,show=Other,hide=Main,hide=Exceptions");
    Trace::setOptions("reset");
    EXPECT_EQ(line(), "word | ");
    EXPECT_TRUE(isOn("Main"));
    EXPECT_TRUE(isOn("Exceptions"));
    EXPECT_FALSE(isOn("Other"));
    Trace::setOptions("line");
    EXPECT_EQ(line(), "word file.cpp             (   7) | ");
}

TEST_F(TraceTest, prefixesComeInOneOrderInEachCombination)
{
    keeper.word = "word ";
    for (int combination = 0; combination < 16; ++combination) {
        keeper.taken();
        Trace::setOptions("reset");
        Trace::setOptions((combination & 1) != 0 ? "pid" : "nopid");
        Trace::setOptions((combination & 2) != 0 ? "prefix" : "noprefix");
        Trace::setOptions((combination & 4) != 0 ? "line" : "noline");
        Trace::setOptions((combination & 8) != 0 ? "indent" : "noindent");
        const bool isIndenting = (combination & 8) != 0;
        const std::string expected = ((combination & 1) != 0 ? pidText() : "") +
                                     ((combination & 2) != 0 ? "word " : "") +
                                     ((combination & 4) != 0 ? "file.cpp             (   7) " : "");
        ENTRY(f);
        EXPECT_EQ(keeper.takenLine(), expected + (isIndenting ? "+ f" : ">>> f")) << combination;
        EXPECT_EQ(line(), expected + (isIndenting ? "  | " : "")) << combination;
    }
    keeper.taken();
}

TEST_F(TraceTest, callsDrawATree)
{
    const auto text = [this] {
        if (Trace::isEnabled(level)) {
            std::ostringstream stream;
            keeper.getTrace().log(stream, "/a/b/file.cpp", 7);
            stream << "text" << '\0';
            TraceManager::getInstance().print(stream.str().c_str());
        }
    };
    {
        ENTRY(f);
        text();
        {
            ENTRY(g);
            text();
            {
                ENTRY(h);
                text();
            }
        }
    }
    EXPECT_EQ(keeper.taken(), (std::vector<std::string>{"+ f", "  | text", "  + g", "  | | text", "  | + h",
                                                        "  | | | text", "  | | /", "  | /", "  /"}));
}

TEST_F(TraceTest, whereALineCantBeWrittenAnEntryThrowsAndAnExitIsSilentAndTheDepthIsRight)
{
    const auto breakLines = [this](bool inPrefix) {
        keeper.isBroken = !inPrefix;
        if (inPrefix)
            keeper.unsettle = [](std::ostream&) { throw std::domain_error("no prefix"); };
    };
    const auto mendLines = [this] {
        keeper.isBroken = false;
        keeper.unsettle = nullptr;
    };
    for (char const* options : {"indent", "noindent"})
        for (bool inPrefix : {false, true}) {
            SCOPED_TRACE(testing::Message() << options << inPrefix);
            Trace::setOptions(options);
            ENTRY(outer);
            const std::string before = line();
            {
                ENTRY(inner);
                breakLines(inPrefix);
            }
            mendLines();
            EXPECT_EQ(line(), before);
            breakLines(inPrefix);
            EXPECT_THROW(ENTRY(refused), std::domain_error);
            mendLines();
            EXPECT_EQ(line(), before);
        }
}

TEST_F(TraceTest, withoutIndentationEntriesAndExitsHaveNames)
{
    Trace::setOptions("noindent");
    {
        ENTRY(f);
        ENTRY(g);
    }
    EXPECT_EQ(keeper.taken(), (std::vector<std::string>{">>> f", ">>> g", "<<< g", "<<< f"}));
}

TEST_F(TraceTest, anEntryOfALevelThatIsOffStaysSilent)
{
    Trace::setOptions("hide=Main");
    {
        ENTRY(f);
        Trace::setOptions("show=Main");
    }
    EXPECT_TRUE(keeper.taken().empty());
    EXPECT_EQ(line(), "| ") << "no depth";
    {
        ENTRY(g);
        Trace::setOptions("hide=Main");
    }
    EXPECT_EQ(keeper.taken(), (std::vector<std::string>{"+ g", "  /"})) << "and one that was on is ended";
}

TEST_F(TraceTest, macrosTraceTheirOwnPlace)
{
    Trace::setOptions("line,fnwidth=9");
    {
        VN_TRACE_ENTRY(level, "f");
        VN_TRACE(level, "takes " << 17);
        const int here = __LINE__ - 1;
        std::ostringstream number;
        number << "tracetest (" << std::setw(4) << here << ") ";
        const std::vector<std::string> lines = keeper.taken();
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[1], number.str() + "  | takes 17");
    }
    int evaluations = 0;
    Trace::setOptions("hide=Main");
    VN_TRACE(level, ++evaluations);
    EXPECT_EQ(evaluations, 0);
}

TEST_F(TraceTest, printFormatsWithoutALineEnd)
{
    std::ostringstream stream;
    keeper.getTrace().print(stream, "file.cpp", 7, "%s %d", "text", 5);
    EXPECT_EQ(stream.str(), "| text 5");
    Trace::setOptions("noindent,line,fnwidth=4");
    keeper.getTrace().print(stream, "file.cpp", 7, "%%");
    EXPECT_EQ(stream.str(), "| text 5file (   7) %");
}

TEST_F(TraceTest, printCutsWhatItsBufferCanNotHold)
{
    std::ostringstream stream;
    const std::string text(5000, 'x');
    keeper.getTrace().print(stream, "file.cpp", 7, "%s", text.c_str());
    EXPECT_EQ(stream.str(), "| " + std::string(1023, 'x'));
}

TEST_F(TraceTest, exceptionsAreTold)
{
    const ExInternalError failure("src/base/x", 12, "broken");
    keeper.getTrace().printException(failure, "file.cpp", 7);
    EXPECT_EQ(keeper.takenLine(), std::string("| Throwing exception ") + failure.getDetailedReason());
    Trace::setOptions("noindent,hide=Exceptions");
    keeper.getTrace().printException(failure, "file.cpp", 7);
    EXPECT_TRUE(keeper.taken().empty());
}

TEST_F(TraceTest, linesArePlainWhateverTheStreamWas)
{
    Trace::setOptions("line,fnwidth=9,pid");
    std::ostringstream stream;
    stream << std::hex << std::setfill('*') << std::right;
    const std::ios_base::fmtflags flags = stream.flags();
    keeper.getTrace().log(stream, "file.cpp", 31);
    EXPECT_EQ(stream.str(), pidText() + "file.cpp  (  31) | ");
    EXPECT_EQ(stream.flags(), flags);
    EXPECT_EQ(stream.fill(), '*');
}

TEST_F(TraceTest, linesArePlainWhateverThePrefixDoesToTheStream)
{
    class Grouping : public std::numpunct<char>
    {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    const struct
    {
        char const* what;
        void (*unsettle)(std::ostream& stream);
    } table[] = {
        {"hexadecimal", [](std::ostream& stream) { stream << std::hex << std::showbase; }},
        {"octal", [](std::ostream& stream) { stream << std::oct; }},
        {"signs", [](std::ostream& stream) { stream << std::showpos; }},
        {"a width", [](std::ostream& stream) { stream << std::setw(40); }},
        {"another fill", [](std::ostream& stream) { stream << std::setfill('*'); }},
        {"a precision", [](std::ostream& stream) { stream << std::setprecision(2); }},
        {"at the left", [](std::ostream& stream) { stream << std::left; }},
        {"between", [](std::ostream& stream) { stream << std::internal; }},
        {"a locale", [](std::ostream& stream) { stream.imbue(std::locale(std::locale(), new Grouping)); }},
    };
    keeper.word = "> ";
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        keeper.unsettle = row.unsettle;
        Trace::setOptions("reset,line,fnwidth=9,pid");
        std::ostringstream stream;
        const std::ios_base::fmtflags flags = stream.flags();
        keeper.getTrace().log(stream, "file.cpp", 31);
        EXPECT_EQ(stream.str(), pidText() + "> file.cpp  (  31) | ");
        EXPECT_EQ(stream.flags(), flags);
        EXPECT_EQ(stream.fill(), ' ');
        stream << 1234 << ' ' << 1.23456;
        EXPECT_EQ(stream.str(), pidText() + "> file.cpp  (  31) | 1234 1.23456") << "what stands behind it";
        Trace::setOptions("reset");
        {
            VN_TRACE_ENTRY(level, "f");
        }
        EXPECT_EQ(keeper.taken(), (std::vector<std::string>{"> + f", ">   /"}));
    }
}

VN_CHILD(traceLevels)
{
    Trace::registerLevel("b", "/x/one.cpp");
    Trace::registerLevel("b", "/x/two.cpp");
    Trace::registerLevel("b", "/x/one.cpp");
    std::string file = "/x/one.cpp";  // the texts are equal, their addresses aren't
    Trace::registerLevel("b", file.c_str());
    file = "/x/six.cpp";
    Trace::registerLevel("a", nullptr);
    Trace::setOptions("show=c");
    Trace::printLevels(std::cout);
    Trace::setOptions("printlevels,fndirs=1");
    std::ostringstream first, second;
    TraceManager::getInstance().getTrace().log(first, "f", 1);
    TraceManager::getInstance().getTrace().log(second, "f", 1);
    std::cout << first.str() << "\n" << second.str() << "\n";
    return 0;
}

VN_CHILD(traceExceptionsFile)
{
    const ExInternalError failure("src/base/x", 12, "broken");
    for (int i = 0; i < 2; ++i)
        TraceManager::getInstance().getTrace().printException(failure, "f", 1);
    std::ostringstream list;
    Trace::printLevels(list);
    std::cout << list.str().substr(0, list.str().find("Main"));
    return 0;
}

TEST(Trace, theFirstExceptionListsItsSourceOnce)
{
    const std::string out = Child("traceExceptionsFile").without("VN_TRACE_OPTIONS").run().out;
    EXPECT_TRUE(out.ends_with("\nRegistered trace levels:\n\nX Exceptions" + std::string(21, ' ') + "trace\nX "))
        << out;
}

TEST(Trace, levelsAreListedWithTheirFiles)
{
    const std::string blanks(33, ' '), tail(29, ' ');
    const auto list = [&](std::string const& folder, std::string const& ownFolder) {
        return "\nRegistered trace levels:\n\n"
               "X Exceptions" +
               std::string(21, ' ') +
               "\n"
               "X Main" +
               std::string(27, ' ') + ownFolder +
               "trace\n"
               "  TestPerformer" +
               std::string(18, ' ') + ownFolder +
               "testperformer\n"
               "  a" +
               tail +
               " \n"
               "  b" +
               tail + " " + folder + "one.cpp\n" + blanks + folder + "two.cpp\n" + blanks + folder + "one.cpp\n" +
               blanks + folder + "one.cpp\n" + "X c" + tail +
               " \n"
               "\n";
    };
    EXPECT_EQ(Child("traceLevels").without("VN_TRACE_OPTIONS").run().out,
              list("", "") + list("x/", "base/") + "| \n| \n");
}

VN_CHILD(traceWriteProtect)
{
    for (int i = 1; i < argc; ++i)
        Trace::setOptions(argv[i]);
    std::ostringstream stream;
    TraceManager::getInstance().getTrace().log(stream, "file", 7);
    std::cout << Trace::isEnabled(*Trace::MainTraceLevel) << stream.str();
    return 0;
}

TEST(Trace, writeProtectHoldsWhatWasSet)
{
    const struct
    {
        std::vector<std::string> options;
        char const* out;
    } table[] = {
        {{"writeprotect,off"}, "1| "},
        {{"off,writeprotect", "on", "reset", "on"}, "0| "},
        {{"line,fnwidth=4,writeprotect", "reset", "noline,fnwidth=9,fndirs=1,noindent,noprefix,pid,hide=Main"},
         "1file (   7) | "},
        {{"writeprotect", "hide=all,show=all"}, "1| "},
        {{"printlevels,reset"}, "1| "},  // not held: no list
    };
    for (auto const& row : table)
        EXPECT_EQ(Child("traceWriteProtect").without("VN_TRACE_OPTIONS").arguments(row.options).run().out, row.out);
    EXPECT_EQ(Child("traceWriteProtect").with("VN_TRACE_OPTIONS", "off,writeprotect").arguments({"on"}).run().out,
              "0| ");
    const std::string listed =
        Child("traceWriteProtect").without("VN_TRACE_OPTIONS").arguments({"writeprotect", "printlevels"}).run().out;
    EXPECT_NE(listed.find("Registered trace levels"), std::string::npos) << "this one still acts";
    EXPECT_NE(Child("traceWriteProtect")
                  .without("VN_TRACE_OPTIONS")
                  .arguments({"writeprotect", "nonsense"})
                  .run()
                  .exitCode,
              0)
        << "and a token that is none is refused all the same";
}

TEST(Trace, theEnvironmentComesBeforeTheProgram)
{
    EXPECT_EQ(Child("traceWriteProtect").with("VN_TRACE_OPTIONS", "line,fnwidth=6,hide=Main").run().out,
              "0file   (   7) | ");
    EXPECT_EQ(Child("traceWriteProtect").with("VN_TRACE_OPTIONS", "line,hide=Main").arguments({"noline"}).run().out,
              "0| ");
}

TEST(Trace, aBadEnvironmentEndsTheProgramBeforeMain)
{
    const ChildRun run = Child("traceWriteProtect").with("VN_TRACE_OPTIONS", "line,nonsense").run();
    EXPECT_TRUE(run.crashed || run.exitCode != 0);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("Unknown token \"nonsense\" in trace options."), std::string::npos) << run.err;
}

VN_CHILD(traceStart)
{
    Trace::setOptions("hide=Main");
    VnTest::start();
    std::cout << Trace::isEnabled(*Trace::MainTraceLevel) << "\n";
    trySetOptions("x=1");
    VnTest::stop();
    VN_TRACE(*Trace::registerLevel("Exceptions", __FILE__), "behind the end");
    return failed;
}

TEST(Trace, startAndStopChangeNothing)
{
    const ChildRun run = Child("traceStart").without("VN_TRACE_OPTIONS").run();
    EXPECT_EQ(run.out, "0\nUnknown token \"x\" in trace options.\n| behind the end\n");
    EXPECT_EQ(run.exitCode, failed);
}

VN_CHILD(traceManagers)
{
    TraceManager& single = TraceManager::getInstance();
    single.print("text");
    single.print("");
    single.print(nullptr);
    single.print("line\n");
    Keeper* const low = new Keeper(0);
    std::cout << (&TraceManager::getInstance() == &single);  // an equal priority isn't enough
    {
        const Keeper high(5);
        std::cout << (&TraceManager::getInstance() == &high);
        const Keeper equal(5), lower(4);
        std::cout << (&TraceManager::getInstance() == &high);
        {
            const Keeper highest(6);
            std::cout << (&TraceManager::getInstance() == &highest);
        }
        std::cout << (&TraceManager::getInstance() == &single);  // and not the one that it replaced
        const Keeper again(5);
        std::cout << (&TraceManager::getInstance() == &again);
    }
    std::cout << (&TraceManager::getInstance() == &single);
    delete low;
    std::cout << (&TraceManager::getInstance() == &single) << "\n";
    return 0;
}

TEST(TraceManager, theHighestPriorityIsCurrent)
{
    EXPECT_EQ(Child("traceManagers").run().out, "text\nline\n\n11111111\n");
}

VN_CHILD(traceFirstManager)
{
    const Keeper* const first = new Keeper(-3);
    std::cout << (&TraceManager::getInstance() == first);
    delete first;
    std::cout << "\n";
    TraceManager::getInstance().print("own");
    return 0;
}

TEST(TraceManager, theFirstOneIsCurrentWhateverItsPriority)
{
    EXPECT_EQ(Child("traceFirstManager").run().out, "1\nown\n");
}

VN_CHILD(traceFirstThreads)
{
    constexpr std::size_t count = 4;
    std::atomic<std::size_t> ready = 0;
    std::vector<Trace*> found(count, nullptr);
    std::vector<std::thread> threads;
    for (Trace*& trace : found)
        threads.emplace_back([&ready, &trace] {
            ++ready;
            while (ready != count)
                ;
            trace = &TraceManager::getInstance().getTrace();
        });
    for (std::thread& thread : threads)
        thread.join();
    const bool areOne = std::count(found.begin(), found.end(), found[0]) == count;
    std::cout << areOne << (found[0] == &TraceManager::getInstance().getTrace()) << "\n";
    return 0;
}

TEST(TraceManager, threadsThatComeFirstAtOnceFindOneManager)
{
    for (int i = 0; i < 5; ++i)
        VnTest::expectOutput("traceFirstThreads", "11\n");
}

TEST(TraceManager, switchesMayFlipWhileThreadsTrace)
{
    TraceLevel& level = *Trace::registerLevel("Threads", nullptr);
    std::vector<int> seen(4, 0);
    {
        std::vector<std::thread> threads;
        for (int& result : seen)
            threads.emplace_back([&level, &result] {
                for (int i = 0; i < 1000; ++i)
                    result += Trace::isEnabled(level) ? 1 : 0;
                TraceManager::getInstance().print("");
            });
        Trace::setOptions("show=Threads");
        for (std::thread& thread : threads)
            thread.join();
    }
    Trace::setOptions("hide=Threads");
    for (const int count : seen)
        EXPECT_LE(count, 1000);
}
