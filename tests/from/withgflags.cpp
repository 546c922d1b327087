// The tasks of docs/from-gflags-absl.md with gflags: withgflags [FLAG]... [test].
#include <gflags/gflags.h>

#include <cstdint>
#include <cstring>
#include <iostream>
#include <string>

DEFINE_int32(depth, 3, "levels of folders to look into");
DEFINE_string(order, "files", "bytes, files or suffix");

static bool isOrder(char const*, std::string const& text)
{
    return text == "bytes" || text == "files" || text == "suffix";
}
DEFINE_validator(order, &isOrder);

static void scan()
{
    std::cout << "depth " << FLAGS_depth << ", order " << FLAGS_order << "\n";
}

static void testScan()
{
    const gflags::FlagSaver saver;
    FLAGS_depth = 0;
    scan();
}

int main(int argc, char** argv)
{
    gflags::SetUsageMessage("Looks into folders.");
    gflags::ParseCommandLineFlags(&argc, &argv, true);
    if (argc > 1 && std::strcmp(argv[1], "test") == 0)
        testScan();
    scan();
    if (argc > 1 && std::strcmp(argv[1], "source") == 0) {
        gflags::CommandLineFlagInfo info;
        gflags::GetCommandLineFlagInfo("depth", &info);
        std::cout << "depth is " << (info.is_default ? "the default" : "given") << "\n";
    }
}
