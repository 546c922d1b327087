#include <base/ossharedlib.h>

namespace Vn
{

OsSharedLib::OsSharedLib(OsFilePath const& path) : _path(path) {}

OsSharedLib::~OsSharedLib() = default;

}  // namespace Vn
