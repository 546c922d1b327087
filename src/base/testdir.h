#pragma once

#include <base/osfilepath.h>

namespace Vn
{

/// The folder for the files that tests make. Static only, one thread.
///
///     Vn::OsFilePath folder = Vn::TestDir::create(Vn::TestDir::getDefaultPath() + "sorting");
///
/// Tests: tests/base/testdirtest.cpp.
class VN_BASE_EXPORT TestDir
{
public:
    TestDir() = delete;

    /// The value of `VN_TEST_DIR`, or the system's temporary folder if that is unset. Looked up at the first call and
    /// kept: later changes of the variable have no effect. Throws what OsFilePath::getTempDir() throws.
    static OsFilePath const& getDefaultPath();

    /// Makes the directory and returns a copy of `path`. One that exists already is no error. Throws what
    /// OsFsUtils::createDir() throws.
    static OsFilePath create(OsFilePath const& path);
};

}  // namespace Vn
