// Command lines of a small program, of any bytes, each element an allocation of its own: what is refused is told, what is taken
// leaves the arguments in their order, and help, pages and settings can be printed whatever the line is.
#include <base/incontextalias.h>
#include <base/ininit.h>
#include <base/inpackageinit.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace
{
using namespace Vn;
using Argument = InContextAlias<InInitArg, 1>;
using Default = InContextAlias<InInitDef, 0>;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

class Package : public InPackageInit
{
public:
    Package() : InPackageInit("fuzzed") { addDependency(InInit<VnInit::initArg>::getType()); }

private:
    void performInitialize() override {}
    void performFinalize() override {}
};

bool isColour(char const* text)
{
    return std::strcmp(text, "red") == 0 || std::strcmp(text, "blue") == 0;
}

struct Declarations
{
    Package package;
    Argument depthOption{"d:", "-d LEVELS: how deep to look"};
    Default depthDefault{"3", "default"};
    InVariable<int> depth{"palette.depth", package, depthOption, depthDefault};
    Argument loudOption{"l", "-l: tell more"};
    Default loudDefault{"false", "default"};
    InVariable<bool> loud{"palette.loud", package, loudOption, loudDefault};
    Argument colourOption{"C:", "colour to begin with"};
    Default colourDefault{"red", "default"};
    InVariable<char const*> colour{"palette.colour", package, colourOption, colourDefault};
    bool wantsGraph = false;
};

class Nothing : public std::streambuf
{
    int overflow(int character) override { return character; }
};
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    static Nothing nothing;
    std::cout.rdbuf(&nothing);
    std::cerr.rdbuf(&nothing);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static Declarations& declarations = *new Declarations;
    static const InUsage usage = InUsage("Paints.")
                                     .operands("FILE...", 0, 3)
                                     .expect(declarations.colour, "red or blue", isColour)
                                     .word("--graph", "print a graph", declarations.wantsGraph)
                                     .word("-perf LIST", "time");
    declarations.wantsGraph = false;

    std::vector<std::string> texts(1, "paint");
    texts.emplace_back();
    for (std::size_t i = 0; i < size; ++i)
        if (data[i] == 0)
            texts.emplace_back();
        else
            texts.back() += static_cast<char>(data[i]);
    std::vector<std::unique_ptr<char[]>> elements;
    std::vector<char*> argv;
    for (std::string const& text : texts) {
        elements.emplace_back(new char[text.size() + 1]);
        std::memcpy(elements.back().get(), text.c_str(), text.size() + 1);
        argv.push_back(elements.back().get());
    }
    argv.push_back(nullptr);
    const std::vector<char*> before = argv;
    int argc = static_cast<int>(texts.size());

    const std::vector<InFault> faults = usage.getFaults(argc, argv.data());
    InUsage::getSettings(argc, argv.data());
    const std::optional<int> end = usage.handle(argc, argv.data());
    // Nothing is refused that has no fault, and what goes on has none.
    check(end != 2 || !faults.empty());
    check(end.has_value() || faults.empty());
    // What stays are elements of the line, in their order.
    check(argc >= 1 && argc <= static_cast<int>(texts.size()) && argv[0] == before[0]);
    std::size_t at = 0;
    for (int i = 0; i < argc; ++i) {
        while (at < before.size() && before[at] != argv[static_cast<std::size_t>(i)])
            ++at;
        check(at < before.size());
        check(texts[at] == before[at]);
    }
    if (!end)
        check(texts.size() - static_cast<std::size_t>(argc) <= 1 || declarations.wantsGraph);
    return 0;
}
