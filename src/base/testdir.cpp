// Where tests leave their files. The logger has a variable of its own for its files.
#include <base/testdir.h>

#include <base/osenv_p.h>
#include <base/osfsutils.h>

namespace Vn
{

/// Read once and never destroyed: files stay together in one folder even if the variable changes, and static objects
/// may still ask.
OsFilePath const& TestDir::getDefaultPath()
{
    static OsFilePath const& path = *[] {
        char const* const given = System::getOwnVariable("VN_TEST_DIR");
        return new OsFilePath(given != nullptr ? OsFilePath(given) : OsFilePath::getTempDir());
    }();
    return path;
}

/// With the folders above it.
OsFilePath TestDir::create(OsFilePath const& path)
{
    OsFsUtils::createDir(path.getChars(), true);
    return path;
}

}  // namespace Vn
