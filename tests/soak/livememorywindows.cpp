// livememorywindows.cpp (Linux form: livememorylinux.cpp)
#include "livememory.h"

#include <malloc.h>

namespace VnSoak
{

std::size_t getLiveMemory()
{
    std::size_t sum = 0;
    ::_HEAPINFO block = {};
    while (::_heapwalk(&block) == _HEAPOK)
        if (block._useflag == _USEDENTRY)
            sum += block._size;
    return sum;
}

bool isFlatWithoutLeaks()
{
    return true;
}

}  // namespace VnSoak
