#include <base/osmemoryarch.h>

#include <base/osmemoryarchimp_p.h>

namespace Vn
{

OsMemoryArch const& OsMemoryArch::getInstance()
{
    static OsMemoryArchImp const* instance = nullptr;
    if (instance == nullptr) {
        OsCpuInfo::CacheInfo data = {}, instruction = {},
                             level2 = {};  // line sizes of 0 for caches that nobody reports
        int pageSize = 0;
        OsCpuInfo::getMemoryInfo(&data, &instruction, &level2, &pageSize);
        instance = new OsMemoryArchImp(data, level2, pageSize);
    }
    return *instance;
}

}  // namespace Vn
