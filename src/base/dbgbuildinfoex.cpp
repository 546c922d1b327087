// The exceptions of the build-information registry.
//
// Intended: the family stands before the standard base, unlike in most families. The order of the bases is part of
// the interface; do not mend.
#include <base/dbgbuildinfoex.h>

#include <base/exreasontext_p.h>

namespace Vn
{
namespace
{
constexpr int longestText = 64;  ///< of each name and stamp; the rest of it is left out of the message
}  // namespace

DbgBuildInfoEx::DbgBuildInfoEx(char const* file, int line) : ExBase(file, line) {}

/// The text has the first library's version behind the API, since that version counts as the API's.
DbgBuildInfoEx::ExVersionMismatch::ExVersionMismatch(char const* file, int line, char const* api, int apiMajor,
                                                     int apiMinor, char const* library, int libraryMajor,
                                                     int libraryMinor)
    : DbgBuildInfoEx(file, line), std::runtime_error("")
{
    setReason(ExReasonText("Version mismatch, API '%.*s' v%d.%d: library '%.*s' at v%d.%d.", longestText,
                           ExReasonText::orEmpty(api), apiMajor, apiMinor, longestText,
                           ExReasonText::orEmpty(library), libraryMajor, libraryMinor)
                  .get());
}

VN_EX_DEFINE_MEMBERS(DbgBuildInfoEx::ExVersionMismatch);

/// Null texts count as empty: they come from other libraries.
DbgBuildInfoEx::ExBuildStampMismatch::ExBuildStampMismatch(char const* file, int line, char const* api,
                                                           char const* apiStamp, char const* library,
                                                           char const* libraryStamp)
    : DbgBuildInfoEx(file, line), std::runtime_error("")
{
    setReason(ExReasonText("Build stamp mismatch, API '%.*s' build %.*s: library '%.*s' using build %.*s.",
                           longestText, ExReasonText::orEmpty(api), longestText, ExReasonText::orEmpty(apiStamp),
                           longestText, ExReasonText::orEmpty(library), longestText,
                           ExReasonText::orEmpty(libraryStamp))
                  .get());
}

VN_EX_DEFINE_MEMBERS(DbgBuildInfoEx::ExBuildStampMismatch);

/// A process is one application, so a second object is a mistake in the program.
DbgBuildInfoEx::ExAppAlreadyRegistered::ExAppAlreadyRegistered(char const* file, int line)
    : DbgBuildInfoEx(file, line), std::runtime_error("")
{
    setReason("Application-level build info already registered.");
}

VN_EX_DEFINE_MEMBERS(DbgBuildInfoEx::ExAppAlreadyRegistered);

/// Programs that only print use printAppInfo(), which doesn't throw.
DbgBuildInfoEx::ExAppNotRegistered::ExAppNotRegistered(char const* file, int line)
    : DbgBuildInfoEx(file, line), std::runtime_error("")
{
    setReason("No application-level build info available.");
}

VN_EX_DEFINE_MEMBERS(DbgBuildInfoEx::ExAppNotRegistered);

}  // namespace Vn
