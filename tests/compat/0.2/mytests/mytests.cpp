// mytests: a test program of the family. Each group is a static object; `main` is one line.
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
    return Vn::TestMgr::runTest(argc, argv);
}
