#include <base/testdir.h>

#include <base/osenv_p.h>
#include <base/osfsutils.h>

namespace Vn
{

OsFilePath const& TestDir::getDefaultPath()
{
    static OsFilePath const& path = *[] {
        char const* const given = System::getOwnVariable("VN_TEST_DIR");
        return new OsFilePath(given != nullptr ? OsFilePath(given) : OsFilePath::getTempDir());
    }();
    return path;
}

OsFilePath TestDir::create(OsFilePath const& path)
{
    OsFsUtils::createDir(path.getChars(), true);
    return path;
}

}  // namespace Vn
