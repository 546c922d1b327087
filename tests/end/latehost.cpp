// A program that isn't linked to the library and loads one that is: latehost SCENARIO. Its static object was made before
// those of the library and of the plug-in, so when it is destroyed, they have been.
#include "library.h"

namespace
{
class Last
{
public:
    ~Last()
    {
        if (atTheEnd != nullptr)
            atTheEnd();
    }

    void (*atTheEnd)() = nullptr;
};

Last last;
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    static VnTest::Library const& plugIn = *new VnTest::Library("VNtestlate");  // stays to the end
    if (!plugIn.find<bool(char const*)>("lateBegin")(argv[1]))
        return 2;
    last.atTheEnd = plugIn.find<void()>("lateEnd");
    return 0;
}
