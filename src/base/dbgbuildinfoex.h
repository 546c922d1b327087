#pragma once

#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Family of the exceptions of the build information. Texts in their messages are cut to 64 characters.
/// Tests: tests/base/dbgbuildinfomgrtest.cpp.
class VN_BASE_EXPORT DbgBuildInfoEx : public ExBase
{
public:
    class ExVersionMismatch;
    class ExBuildStampMismatch;
    class ExAppAlreadyRegistered;
    class ExAppNotRegistered;

protected:
    /// The place of the throw.
    DbgBuildInfoEx(char const* file, int line);
};

/// A library has another version than the first one of its API. Throw it nowhere else:
/// DbgBuildInfoMgr::registerInfo() does.
class VN_BASE_EXPORT DbgBuildInfoEx::ExVersionMismatch : public DbgBuildInfoEx, public std::runtime_error
{
public:
    /// The message names the API with the version that its first library has, and the library with its own.
    ExVersionMismatch(char const* file, int line, char const* api, int apiMajor, int apiMinor, char const* library,
                      int libraryMajor, int libraryMinor);

    VN_EX_MEMBERS();
};

/// A library comes from another build than the first one of its API.
class VN_BASE_EXPORT DbgBuildInfoEx::ExBuildStampMismatch : public DbgBuildInfoEx, public std::runtime_error
{
public:
    /// The message names the API with the stamp that its first library has, and the library with its own.
    ExBuildStampMismatch(char const* file, int line, char const* api, char const* apiStamp, char const* library,
                         char const* libraryStamp);

    VN_EX_MEMBERS();
};

/// The application has said who it is before.
class VN_BASE_EXPORT DbgBuildInfoEx::ExAppAlreadyRegistered : public DbgBuildInfoEx, public std::runtime_error
{
public:
    /// The place of the throw; the message is always the same.
    ExAppAlreadyRegistered(char const* file, int line);

    VN_EX_MEMBERS();
};

/// The application hasn't said who it is.
class VN_BASE_EXPORT DbgBuildInfoEx::ExAppNotRegistered : public DbgBuildInfoEx, public std::runtime_error
{
public:
    /// The place of the throw; the message is always the same.
    ExAppNotRegistered(char const* file, int line);

    VN_EX_MEMBERS();
};

}  // namespace Vn
