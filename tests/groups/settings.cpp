#include "workgroup.h"

#include <base/inoptionparser.h>
#include <base/invariable.h>

#include <vector>

namespace
{
class Settings : public WorkGroup
{
public:
    Settings() : WorkGroup("settings", "Parses command lines and overrides a setting.", 1000) {}

private:
    void work(unsigned long count) override
    {
        std::vector<std::string> words{"program", "-a"};
        for (unsigned long i = 0; i < count; ++i) {
            words.push_back("-n");
            words.push_back(std::to_string(i));
        }
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        Vn::InOptionParser parser(static_cast<int>(words.size()), arguments.data(), "an:");
        require(parser.getOption() == 'a', "the first option");
        for (unsigned long i = 0; i < count; ++i) {
            require(parser.getOption() == 'n', "an option with a value");
            require(std::to_string(i) == parser.getValue(), "its value");
        }
        require(parser.getOption() == -1, "the end of the options");
    }
} settings;
}  // namespace
