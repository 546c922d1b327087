#include "exportformat.h"

namespace vnlog
{
char const* getKindWord(Kind kind)
{
    switch (kind) {
    case Kind::Message:
        return "message";
    case Kind::Overflow:
        return "lost";
    case Kind::Started:
    case Kind::StartedOn:
    case Kind::ClockFrequency:
    case Kind::Blank:
        return "started";
    case Kind::Stopped:
        return "stopped";
    case Kind::Plain:
        break;
    }
    return "plain";
}

std::string getProgram(ExportNames const& names, std::string_view fileName)
{
    if (!names.program.empty())
        return names.program;
    const std::string_view leaf = fileName.substr(fileName.find_last_of("/\\") + 1);
    const std::string_view stem = leaf.substr(0, leaf.find('.', 1));
    return stem.empty() || stem == "-" ? "unknown" : std::string(stem);
}

}  // namespace vnlog
