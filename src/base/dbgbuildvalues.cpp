// The only source that is compiled with the build's own texts, so that a new build number recompiles nothing else.
#include <base/dbgbuildvalues_p.h>

namespace Vn::DbgBuildValues
{

/// The short stamp is the number alone behind a letter; the long one names the product too.
char const shortStamp[] = "P. " VN_BUILD_NUMBER;
char const stamp[] = "ProductNG-Tessola_" VN_BUILD_NUMBER;
char const date[] = VN_BUILD_DATE;
char const type[] = VN_BUILD_TYPE;
char const builder[] = VN_BUILDER;

}  // namespace Vn::DbgBuildValues
