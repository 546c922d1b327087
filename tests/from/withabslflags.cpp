// The tasks of docs/from-gflags-absl.md with Abseil's flags: withabslflags [FLAG]... [test].
#include <absl/flags/flag.h>
#include <absl/flags/parse.h>
#include <absl/flags/reflection.h>
#include <absl/flags/usage.h>
#include <absl/strings/string_view.h>

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

enum class Order
{
    bytes,
    files,
    suffix
};

bool AbslParseFlag(absl::string_view text, Order* order, std::string* error);
std::string AbslUnparseFlag(Order order);

bool AbslParseFlag(absl::string_view text, Order* order, std::string* error)
{
    for (Order each : {Order::bytes, Order::files, Order::suffix}) {
        if (text == AbslUnparseFlag(each)) {
            *order = each;
            return true;
        }
    }
    *error = "is not bytes, files or suffix";
    return false;
}

std::string AbslUnparseFlag(Order order)
{
    return order == Order::bytes ? "bytes" : order == Order::files ? "files" : "suffix";
}

ABSL_FLAG(int, depth, 3, "levels of folders to look into");
ABSL_FLAG(Order, order, Order::files, "bytes, files or suffix");

static void scan()
{
    std::cout << "depth " << absl::GetFlag(FLAGS_depth) << ", order " << AbslUnparseFlag(absl::GetFlag(FLAGS_order))
              << "\n";
}

static void testScan()
{
    const absl::FlagSaver saver;
    absl::SetFlag(&FLAGS_depth, 0);
    scan();
}

int main(int argc, char** argv)
{
    absl::SetProgramUsageMessage("Looks into folders.");
    const std::vector<char*> operands = absl::ParseCommandLine(argc, argv);
    if (operands.size() > 1 && std::strcmp(operands[1], "test") == 0)
        testScan();
    scan();
}
