// The object is made on first use and never destroyed, so that code that runs while the process exits can still ask
// it. Intended: the pointer is tested and set without a lock. Do not mend: the package `osal` makes the first call,
// before there are other threads, and each later one is a plain read.
#include <base/osmemoryarch.h>

#include <base/osmemoryarchimp_p.h>

namespace Vn
{

OsMemoryArch const& OsMemoryArch::getInstance()
{
    static OsMemoryArchImp const* instance = nullptr;
    if (instance == nullptr) {
        OsCpuInfo::CacheInfo data = {}, instruction = {},
                             level2 = {};  // decoding leaves the line size of an unreported cache as it is: 0
        int pageSize = 0;
        OsCpuInfo::getMemoryInfo(&data, &instruction, &level2, &pageSize);
        instance = new OsMemoryArchImp(data, level2, pageSize);
    }
    return *instance;
}

}  // namespace Vn
