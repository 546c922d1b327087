// Help and refusals, from the declarations. The command line is walked in incommandline.cpp, the texts are made in
// inusagereport.cpp, their rows in inusageentries.cpp and their columns in inusagelayout.cpp, the man page is
// that of inusageman.cpp, the completion that of inusagecompletion.cpp; here is what a program calls.
//
// handle() asks in this order, and the first that applies ends the program: help, a page, the versions, a fault, the settings.
// So who adds -h to a command line that is wrong gets help and not the fault, while the settings of a wrong command line, which
// would be those of another one, are refused.
//
// Nothing is started for any of that. The declarations are static objects, which exist before main(); what they would read is
// read by incommandline.cpp in the start's own way.
#include <base/inusage.h>

#include <base/incommandline_p.h>
#include <base/osterminal.h>

#include <algorithm>
#include <iostream>

namespace Vn
{
namespace
{
/// What a program ends with, as most command-line tools have it.
constexpr int success = 0;
constexpr int failed = 1;
constexpr int wronglyUsed = 2;

std::string orEmpty(char const* text)
{
    return text != nullptr ? text : "";
}

/// A full disk or a closed pipe is a failure, also of a help text.
int endOfPrinting(std::string const& program)
{
    if (std::cout.flush())
        return success;
    std::cerr << program << ": the standard output can't be written\n";
    return failed;
}

/// Who asks for the settings alone needs no operands.
InFault const* firstFaultOf(InCommandLine const& line)
{
    for (InFault const& fault : line.getFaults())
        if (fault.kind != InFault::WrongOperand || !line.wantsSettings())
            return &fault;
    return nullptr;
}

/// The vector stays ended by a null, as main() got it.
void removeArgument(int index, int& argc, char** argv)
{
    for (int i = index; i + 1 < argc; ++i)
        argv[i] = argv[i + 1];
    argv[--argc] = nullptr;
}

/// Sets each flag to whether its word was given, and takes the words out of the arguments.
void takeBoundWords(InCommandLine const& line, std::vector<InUsageState::Word> const& words, int& argc, char** argv)
{
    for (InUsageState::Word const& word : words)
        if (word.isGiven != nullptr)
            *word.isGiven = false;
    int removed = 0;
    for (auto const& [index, word] : line.getBoundWords()) {
        *word->isGiven = true;
        removeArgument(index - removed, argc, argv);
        ++removed;
    }
}
}  // namespace

InUsage::InUsage(char const* summary) : _state(new InUsageState)
{
    _state->summary = orEmpty(summary);
}

/// A copy is independent: a program may keep a common usage and add to it for each of its subcommands.
InUsage::InUsage(InUsage const& other) : _state(new InUsageState(*other._state)) {}

InUsage& InUsage::operator=(InUsage const& other)
{
    *_state = InUsageState(*other._state);
    return *this;
}

InUsage::~InUsage()
{
    delete _state;
}

InUsage& InUsage::operands(char const* names, int least, int most)
{
    _state->operandNames = orEmpty(names);
    _state->leastOperands = least;
    _state->mostOperands = most;
    return *this;
}

InUsage& InUsage::expect(InVariableBase const& variable, char const* what, bool (*isRight)(char const* text))
{
    _state->demands.push_back({&variable, orEmpty(what), isRight});
    return *this;
}

InUsage& InUsage::word(char const* word, char const* description, bool& isGiven)
{
    _state->words.push_back({orEmpty(word), orEmpty(description), &isGiven});
    return *this;
}

InUsage& InUsage::word(char const* word, char const* description)
{
    _state->words.push_back({orEmpty(word), orEmpty(description), nullptr});
    return *this;
}

InUsage& InUsage::note(char const* text)
{
    _state->notes.push_back(orEmpty(text));
    return *this;
}

std::optional<int> InUsage::handle(int& argc, char** argv) const
{
    const InCommandLine line(argc, argv, _state);
    const std::string program = programNameOf(argc > 0 && argv != nullptr ? argv[0] : nullptr);
    if (line.wantsHelp()) {
        print(std::cout, program.c_str(), OsTerminal::getColumns());
        return endOfPrinting(program);
    }
    if (line.getPage() != InCommandLine::NoPage) {
        char const* const name = (line.getPageName().empty() ? program : line.getPageName()).c_str();
        line.getPage() == InCommandLine::ManPage ? printManPage(std::cout, name)
                                                 : printBashCompletion(std::cout, name);
        return endOfPrinting(program);
    }
    if (line.wantsVersion()) {
        printVersions(std::cout, program);
        return endOfPrinting(program);
    }
    if (InFault const* const fault = firstFaultOf(line)) {
        std::cerr << program << ": " << fault->message << "; " << program << " "
                  << (line.hasOwnH() ? "--help" : "-h") << " tells more\n";
        return wronglyUsed;
    }
    if (line.wantsSettings()) {
        std::vector<InSetting> settings = getSettings(argc, argv);
        std::stable_partition(settings.begin(), settings.end(),
                              [](InSetting const& setting) { return !isOwnSetting(setting.handle); });
        printSettings(std::cout, settings);
        return endOfPrinting(program);
    }
    // Behind all words, so it goes first.
    if (const int endMark = line.getLeftEndMark())
        removeArgument(endMark, argc, argv);
    takeBoundWords(line, _state->words, argc, argv);
    return std::nullopt;
}

/// All of them, where handle() tells the first.
std::vector<InFault> InUsage::getFaults(int argc, char const* const* argv) const
{
    return InCommandLine(argc, argv, _state).getFaults();
}

}  // namespace Vn
