// What is the same on every system; loading is in ossharedlibposix.cpp and ossharedlibwindows.cpp.
#include <base/ossharedlib.h>

namespace Vn
{

// Keeps the path for messages; loading is up to the platform's form.
OsSharedLib::OsSharedLib(OsFilePath const& path) : _path(path) {}

OsSharedLib::~OsSharedLib() = default;

}  // namespace Vn
