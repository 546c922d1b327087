#pragma once

#include <base/baseexport.h>

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace Vn
{

class InUsageState;
class InVariableBase;

/// A setting as it stands, or as the start would leave it: see InUsage::getSettings().
struct InSetting
{
    std::string handle;  ///< of the variable
    bool hasValue;       ///< false if no source has one: reading the variable throws
    std::string value;   ///< the text of the source that won, as it is
    std::string
        reading;  ///< what the variable makes of it, for people: "7", "true", "'red'"; "none" without a value
    std::string source;  ///< "option -d", "environment PALETTE_DEPTH", "default", "override"; "" without a value
};

/// What is wrong with a command line or the environment: see InUsage::getFaults().
struct InFault
{
    /// What sort of mistake it is.
    enum Kind
    {
        UnknownOption,  ///< nobody declared it
        MissingValue,   ///< the command line ends behind it
        WrongValue,     ///< is no value of its variable's type, or not what InUsage::expect() asks for
        WrongOperand    ///< too few, too many, or an option behind one
    };

    Kind kind;            ///< for a program that handles some of them by itself
    std::string subject;  ///< "-d", "--word", "PALETTE_DEPTH", or the operand, as given; "" for one that is missing
    std::string message;  ///< one line for people, control characters shown
};

/// The help text of a program and the refusal of a wrong command line, made of the settings that it declares.
///
///     int main(int argc, char** argv)
///     {
///         if (auto const end = Vn::InUsage("Greets somebody.").handle(argc, argv))
///             return *end;
///         char const* const* arguments = argv;
///         Vn::InInitGuard guard(argc, arguments);
///         ...
///     }
///
///     greeter -h            prints the text below and ends with 0; so does --help
///     greeter --version     prints the program and the libraries of the family in the process
///     greeter --settings    prints each setting with its value and the source that won
///     greeter --help=man    prints a man page; --help=bash a completion for bash
///     greeter -q            "greeter: unknown option -q; greeter -h tells more", and ends with 2
///
///     greeter [OPTION]...
///     Greets somebody.
///
///     Options:
///       -n NAME      whom to greet (GREETER_NAME, default world)
///       -h, --help   this text
///       ...
///
/// All of it happens before the start, and starts nothing: no package, no log. The start itself has rules that are
/// more patient (InContextAliasMgrBase::getUnboundArgs()), and keeps them: an unknown option ends its parsing without a
/// message, a missing value is the empty text, and a number is what a text begins with.
///
/// The words come from the declarations. The description of an option may begin with the option itself and with a
/// word in capitals for its value; without one the type has a word.
///
///     key "n:", "-n NAME: whom to greet"      ->  "-n NAME     whom to greet"
///     key "n:", "NAME: whom to greet"         ->  "-n NAME     whom to greet"
///     key "d:", "how deep to look", an int    ->  "-d NUMBER   how deep to look"
///     key "v",  "-v: tell more"               ->  "-v          tell more"
///
/// A variable without an option stands among the variables of the environment, with the description of that source.
/// Settings of this library, whose handles begin with "Vn::", are in --settings alone. A program that declares an option
/// `h` itself keeps it, and has its help under --help.
///
/// Build it where it is used; it keeps copies of the texts. Nothing is locked: for the thread that drives the start.
/// Throws std::bad_alloc and nothing else, whatever the arguments are.
/// Tests: tests/base/inusagetest.cpp, tests/examples/usagetest.cpp.
class VN_BASE_EXPORT InUsage
{
public:
    /// `summary` says in a sentence what the program does. Null counts as empty here and everywhere below.
    explicit InUsage(char const* summary);

    /// @{
    /// Copies are independent of each other, but for the flags that word() has bound.
    InUsage(InUsage const&);
    InUsage& operator=(InUsage const&);
    ~InUsage();
    /// @}

    /// Says what stands behind the options; without this call nothing may.
    ///
    ///     operands("FOLDER", 1, 1)         one
    ///     operands("[FILE]...")            any number
    ///     operands("NAME...", 1)           at least one
    ///
    /// `names` stands in the usage text as it is. A `most` below 0 is no limit.
    InUsage& operands(char const* names, int least = 0, int most = -1);

    /// Makes a further demand on a setting than its type does.
    ///
    ///     usage.expect(order, "bytes, files or suffix", isOrder);
    ///     ->  "-s takes bytes, files or suffix, not 'colour'"
    ///
    /// `isRight` must not be null. It sees each text that an option has for the variable, and that of the environment if it
    /// would win.
    InUsage& expect(InVariableBase const& variable, char const* what, bool (*isRight)(char const* text));

    /// Adds a word that stands among the options and that no setting has. handle() takes it out of the arguments, and
    /// sets `isGiven` to whether it was there.
    ///
    ///     usage.word("--graph", "print the packages and their dependencies", wantsGraph);
    ///
    InUsage& word(char const* word, char const* description, bool& isGiven);

    /// Adds a word that the program looks for by itself. It stays where it is, and what follows it is not looked at.
    ///
    ///     usage.word("-perf LIST", "time the groups of the file LIST");
    ///
    InUsage& word(char const* word, char const* description);

    /// Adds text below the options. Lines are wrapped. A line that begins with a blank is a row of two columns, with
    /// two or more blanks between them.
    ///
    ///     usage.note("Messages go to:\n  events.log   all but times\n  prof.log   times");
    ///
    InUsage& note(char const* text);

    /// Handles -h, --help, --help=man, --help=bash, --version and --settings, and refuses what getFaults() finds.
    ///
    ///     nothing of these     ->  nothing: go on, and start
    ///     -h and the others    ->  0, after printing to standard output
    ///     a fault              ->  2, after one line on standard error, which ends in a hint to -h
    ///     can't be printed     ->  1, after one line on standard error
    ///
    /// Help wins over everything, also behind operands; then a page for man or bash, and then --version, win over all
    /// faults. An element with several options is read up to its first fault: "-hq" is help, and "-qh" is refused. A fault
    /// wins over --settings, unless it concerns the operands. Removes what word() has bound from the arguments, and a
    /// "--" that ends the options if none is declared (else the start removes it), and makes `argc` smaller.
    std::optional<int> handle(int& argc, char** argv) const;

    /// Prints a man page in the language of man(7), from the same declarations as the usage text.
    ///
    ///     greeter --help=man > greeter.1            the page of greeter
    ///     greeter --help=man:hello > hello.1        of a program that is installed as hello
    ///     man --warnings -l greeter.1 > /dev/null   tells nothing
    ///
    /// `program` is the name on the page. Whatever a declaration holds is text there, and no request. Day and version are
    /// those that the application has registered (DbgBuildInfoMgr::registerAppInfo()), else this library's. The usage
    /// text doesn't name these two options: they are for those who package a program. Texts beyond ASCII are UTF-8.
    std::ostream& printManPage(std::ostream& stream, char const* program) const;

    /// Prints a function for bash that completes the command line of `program`, and the command that registers it.
    ///
    ///     greeter --help=bash > completions/greeter         or --help=bash:hello
    ///     . completions/greeter
    ///     greeter -<TAB>        options and words
    ///     greeter -s <TAB>      the words of expect(), if its text lists nothing else: "bytes, files or suffix"
    ///     greeter -l <TAB>      true or false, if the option takes such a value
    ///     greeter -o <TAB>      folders if the value is called FOLDER or DIR..., else files; nothing for numbers and times
    ///
    /// Behind the options come files, or folders, or nothing, by what operands() says. An option's value is known also
    /// behind a cluster ("-lo FILE"), and "--" and the first operand end the options, as for handle(). Needs bash 4 and
    /// no other package.
    std::ostream& printBashCompletion(std::ostream& stream, char const* program) const;

    /// Prints the usage text in lines of less than `columns` characters, 40 at the least. A word that is longer stays whole.
    std::ostream& print(std::ostream& stream, char const* program, int columns) const;

    /// What handle() would refuse, in the order of the command line, then what is wrong with the environment. The variables
    /// of this library's own settings are not looked at.
    std::vector<InFault> getFaults(int argc, char const* const* argv) const;

    /// All settings of the process, by handle. What runs tells the value that it has, everything else the one that the
    /// start would give it with these arguments. What getFaults() would refuse is passed over.
    ///
    ///     before the start             ->  from overrides, `argv`, the environment and defaults, by their ranks
    ///     while its package runs       ->  what its getValue() has
    ///     behind the stop, no `argv`   ->  as before the start, with no option given
    ///
    static std::vector<InSetting> getSettings(int argc = 0, char const* const* argv = nullptr);

    /// Prints those settings in columns, one line each, control characters shown.
    static std::ostream& printSettings(std::ostream& stream, std::vector<InSetting> const& settings);

private:
    InUsageState* _state;
};

}  // namespace Vn
