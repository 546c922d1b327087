// The tasks of docs/from-googletest.md with test groups: vntestgroups [GROUP [ARGUMENT]...].
#include <base/assertions.h>
#include <base/testgroup.h>
#include <base/testmgr.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <vector>

class Sorting : public Vn::TestGroup
{
public:
    Sorting() : TestGroup("sorting") { setUsage("COUNT"); }

    void prepare(int argc, char** const argv) override
    {
        _numbers.resize(argc > 0 ? std::strtoul(argv[0], nullptr, 10) : 10);
        std::iota(_numbers.rbegin(), _numbers.rend(), 0);
    }

    void execute(int, char** const) override
    {
        std::sort(_numbers.begin(), _numbers.end());
        if (_numbers.front() != 0)
            Vn::Assertions::throwAssertionFailed("vntestgroups", __LINE__, "_numbers.front() == 0");
    }

    void terminate() override { _numbers.clear(); }

private:
    std::vector<int> _numbers;
} sorting;

class Broken : public Vn::TestGroup
{
public:
    Broken() : TestGroup("broken") {}

    void execute(int, char** const) override
    {
        const std::vector<int> numbers{2, 1};
        if (!std::is_sorted(numbers.begin(), numbers.end()))
            Vn::Assertions::throwAssertionFailed("vntestgroups", __LINE__, "std::is_sorted(numbers)");
    }
} broken;

int main(int argc, char** argv)
{
    return Vn::TestMgr::runTest(argc, argv);
}
