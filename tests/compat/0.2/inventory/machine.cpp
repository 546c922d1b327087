#include "machine.h"

#include "date.h"

#include <base/exbase.h>
#include <base/lmlibraries.h>
#include <base/oscpuinfo.h>
#include <base/osdateutil.h>
#include <base/osendian.h>
#include <base/osmemoryarch.h>
#include <base/osutils.h>

#include <iomanip>
#include <ostream>
#include <string>

namespace Inventory
{
namespace
{
constexpr char notReported[] = "(not reported)";

std::string textOrNone(char const* text)
{
    return text != nullptr && *text != '\0' ? text : notReported;
}

/// What the machine doesn't tell is 0, or -1 where it is counted.
std::string numberOrNone(long long number, char const* unit)
{
    return number > 0 ? std::to_string(number) + unit : notReported;
}

void printRow(std::ostream& stream, char const* name, std::string const& value)
{
    stream << "  " << std::left << std::setw(20) << name << std::right << value << "\n";
}

template <class Get>
std::string nameOf(Get const& get)
{
    try {
        return textOrNone(get().get());
    } catch (Vn::ExBase const& failure) {
        return failure.getReason();
    }
}

std::string processorOf()
{
    Vn::OsCpuInfo::Type type = Vn::OsCpuInfo::Unknown;
    int family = 0, model = 0, stepping = 0;
    Vn::OsCpuInfo::getDetailedType(&type, &family, &model, &stepping);
    return textOrNone(Vn::OsCpuInfo::getTypeName()) + ", type " + std::to_string(type) + ", family " +
           std::to_string(family) + ", model " + std::to_string(model) + ", stepping " + std::to_string(stepping);
}

std::string cacheOf(unsigned size, unsigned waySize, unsigned lineSize)
{
    return numberOrNone(size, " bytes") + ", way " + numberOrNone(waySize, " bytes") + ", line " +
           numberOrNone(lineSize, " bytes");
}
}  // namespace

void printMachine(std::ostream& stream)
{
    Vn::OsMemoryArch const& memory = Vn::OsMemoryArch::getInstance();
    printRow(stream, "name", nameOf(Vn::OsUtils::getHostName));
    printRow(stream, "user", nameOf([] { return Vn::OsUtils::getUserName(true); }));
    printRow(stream, "time", textOf(Vn::OsDateUtil::getCurrentTime()));
    printRow(stream, "processor", processorOf());
    printRow(stream, "features",
             std::string(Vn::OsCpuInfo::hasMMX() ? "MMX " : "") + (Vn::OsCpuInfo::hasSSE() ? "SSE " : "") +
                 (Vn::OsEndian::isBigEndian() ? "big-endian" : "little-endian"));
    printRow(stream, "clock", numberOrNone(static_cast<long long>(Vn::OsCpuInfo::getHwCounterFrequency()), " Hz"));
    printRow(stream, "first-level cache",
             cacheOf(memory.getL1Size(), memory.getL1WaySize(), memory.getL1LineSize()));
    printRow(stream, "second-level cache",
             cacheOf(memory.getL2Size(), memory.getL2WaySize(), memory.getL2LineSize()));
    printRow(stream, "page", numberOrNone(memory.getPageSize(), " bytes"));
}

void printModules(std::ostream& stream)
{
    for (Vn::LmLibrary const& library : Vn::LmLibraries::getList()) {
        std::uintptr_t size = 0;
        for (Vn::LmBlock const& block : library.getBlocks())
            size += block.getSize();
        stream << std::setw(14) << size << "  " << library.getPath() << "\n";
    }
}

}  // namespace Inventory
