// Private to osdirectory.cpp and ostreecopy.cpp.
#pragma once

#include <base/osfilepath.h>

namespace Vn
{

/// OsDirectory::copyHierarchy().
void copyTree(OsFilePath const& source, OsFilePath const& target);

}  // namespace Vn
