#include <base/dbgbuildvalues.h>

namespace Vn::DbgBuildValues
{

char const shortStamp[] = "P. " VN_BUILD_NUMBER;
char const stamp[] = "ProductNG-Tessola_" VN_BUILD_NUMBER;
char const type[] = VN_BUILD_TYPE;
char const builder[] = VN_BUILDER;

#if defined(VN_BUILD_DATE)
char const date[] = VN_BUILD_DATE;
#else
char const date[] = __DATE__;
#endif

}  // namespace Vn::DbgBuildValues
