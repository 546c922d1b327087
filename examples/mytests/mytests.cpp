// mytests: a test program of the family. Each group is a static object.
#include <base/inusage.h>
#include <base/testgroup.h>
#include <base/testmgr.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <vector>

class Sorting : public Vn::TestGroup
{
public:
    Sorting() : TestGroup("sorting") { setUsage("COUNT"); }

    void execute(int argc, char** const argv) override
    {
        std::vector<int> numbers(argc > 0 ? std::strtoul(argv[0], nullptr, 10) : 1000);
        std::generate(numbers.begin(), numbers.end(), std::rand);
        std::sort(numbers.begin(), numbers.end());
        if (!std::is_sorted(numbers.begin(), numbers.end()))
            throw std::logic_error("not sorted");
    }
} sorting;

int main(int argc, char** argv)
{
    // What follows the first argument belongs to the driver, or to a group.
    int first = std::min(argc, 2);
    const Vn::InUsage usage = Vn::InUsage("Runs groups of tests; lists them without an argument.")
                                  .operands("[GROUP [ARGUMENT]...]")
                                  .word("-perf LIST", "time the groups of the file LIST")
                                  .word("-dumpLibs", "print the loaded libraries, behind a group if one is named")
                                  .word("-dumpLeaks", "run a group, and print its leaks")
                                  .word("-detectLeaks", "run a group; it fails if it leaks");
    if (auto const end = usage.handle(first, argv))
        return *end;
    // A "--" in front of the group has been taken out of the first two arguments; the others move up.
    if (first < std::min(argc, 2))
        std::copy(argv + 2, argv + argc-- + 1, argv + 1);
    return Vn::TestMgr::runTest(argc, argv);
}
