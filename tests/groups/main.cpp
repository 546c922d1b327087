// groups: one group of tests for each subsystem, each doing real work at the size that its argument gives. groups.perf is
// its list for a timed run: groups -perf groups.perf
#include <base/testmgr.h>

int main(int argc, char** argv)
{
    return Vn::TestMgr::runTest(argc, argv);
}
