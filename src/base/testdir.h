#pragma once

#include <base/osfilepath.h>

namespace Vn
{

/// Where a test's files go. Static only.
/// Tests: tests/base/testdirtest.cpp.
class VN_BASE_EXPORT TestDir
{
public:
    TestDir() = delete;

    /// The value of `VN_TEST_DIR`, or else the system's folder for temporary files; asked for once and kept. Throws
    /// as OsFilePath::getTempDir().
    static OsFilePath const& getDefaultPath();

    /// Makes the directory, as OsFsUtils::createDir(), and returns its path.
    static OsFilePath create(OsFilePath const& path);
};

}  // namespace Vn
