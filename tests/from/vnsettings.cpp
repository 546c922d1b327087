// The tasks of docs/from-gflags-absl.md with this library: vnsettings [OPTION]... [test].
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/inusage.h>
#include <base/invariable.h>

#include <cstring>
#include <iostream>
#include <string>

namespace VnInit
{
class scanner
{};
}  // namespace VnInit
template <>
class Vn::InInit<VnInit::scanner> : public Vn::InPackageInit
{
    VN_PACKAGE_MEMBERS();
};
VN_DEFINE_PACKAGE(scanner, VnInit::base);
static Vn::InInit<VnInit::scanner> package;

using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
using Variable = Vn::InContextAlias<Vn::InInitEnv, 1>;
using Default = Vn::InContextAlias<Vn::InInitDef, 0>;
static Vn::InVariable<int> depth("scanner.depth", package,
                                 Option("d:", "-d NUMBER: levels of folders to look into"),
                                 Variable("SCANNER_DEPTH", "the same"), Default("3", ""));
static Vn::InVariable<std::string> order("scanner.order", package, Option("s:", "-s ORDER: bytes, files or suffix"),
                                         Default("files", ""));

static bool isOrder(char const* given)
{
    const std::string text = given;
    return text == "bytes" || text == "files" || text == "suffix";
}

static void scan()
{
    std::cout << "depth " << depth.getValue() << ", order " << order.getValue() << "\n";
}

static void testScan()
{
    Vn::InVariableBase::overrideViaHandle("scanner.depth", "0", "tests look into no folder");
}

int main(int argc, char** argv)
{
    const Vn::InUsage usage = Vn::InUsage("Looks into folders.")
                                  .operands("[test]", 0, 1)
                                  .expect(order, "bytes, files or suffix", isOrder);
    if (auto const end = usage.handle(argc, argv))
        return *end;
    if (argc > 1 && std::strcmp(argv[argc - 1], "test") == 0)
        testScan();
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    scan();
}
