// Ten thousand types, in a source of its own that is built without optimisation: they hold no code worth any.
#include "manypackages.h"

#include <utility>

namespace VnBench
{
namespace
{
class PackageBase : public Vn::InPackageInit
{
public:
    PackageBase(char const* name, Needs const& needs) : InPackageInit(name)
    {
        registerPackage();
        for (std::type_info const* type : needs)
            addDependency(type);
    }
};

template <int number>
class Package : public PackageBase
{
public:
    using PackageBase::PackageBase;
    static Vn::InPackageInit* make(char const* name, Needs const& needs) { return new Package(name, needs); }
};

// In blocks, as compilers take more than linear time over long packs.
constexpr int typesPerBlock = 50;

template <int first, int... offsets>
void addBlock(std::vector<PackageType>& list, std::integer_sequence<int, offsets...>)
{
    (list.push_back({Package<first + offsets>::make, &typeid(Package<first + offsets>)}), ...);
}

template <int... blocks>
void addBlocks(std::vector<PackageType>& list, std::integer_sequence<int, blocks...>)
{
    (addBlock<blocks * typesPerBlock>(list, std::make_integer_sequence<int, typesPerBlock>()), ...);
}
}  // namespace

std::vector<PackageType> const& getPackageTypes()
{
    static const std::vector<PackageType> theTypes = [] {
        std::vector<PackageType> list;
        addBlocks(list, std::make_integer_sequence<int, packageTypeCount / typesPerBlock>());
        return list;
    }();
    return theTypes;
}

}  // namespace VnBench
