// The whole library, up and down again; what benchwholestart starts.
#include <base/ininitmgr.h>
#include <base/inpackages.h>

int main(int argc, char** argv)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    return 0;
}
