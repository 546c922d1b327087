#include <base/osfileex.h>

#include <base/exreasontext_p.h>

namespace Vn
{
namespace
{
constexpr int pathLimit = 256;  ///< bytes of a path that a message shows

ExReasonText invalidPath(char const* path)
{
    return ExReasonText("Invalid path: '%.*s'.", pathLimit, ExReasonText::orEmpty(path));
}
}  // namespace

OsFileEx::ExIllegalPathConcat::ExIllegalPathConcat(char const* file, int line)
    : std::runtime_error(""), ExBase(file, line)
{
    setReason("Attempt to concatenate absolute path.");
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExIllegalPathConcat);

OsFileEx::ExSeparatorNotAllowed::ExSeparatorNotAllowed(char const* file, int line)
    : std::invalid_argument(""), ExBase(file, line)
{
    setReason("Separator not allowed in path elements.");
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExSeparatorNotAllowed);

OsFileEx::ExHomeNotDefined::ExHomeNotDefined(char const* file, int line)
    : std::runtime_error(""), ExBase(file, line)
{
    setReason("Cannot get home directory from the environment.");
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExHomeNotDefined);

OsFileEx::ExNullFilePath::ExNullFilePath(char const* file, int line) : std::runtime_error(""), ExBase(file, line)
{
    setReason("File has null file path.");
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExNullFilePath);

OsFileEx::ExFileExists::ExFileExists(char const* file, int line) : std::runtime_error(""), ExBase(file, line)
{
    setReason("File already exists.");
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExFileExists);

OsFileEx::ExInvalidPath::ExInvalidPath(char const* file, int line, char const* path)
    : std::invalid_argument(""), ExBase(file, line)
{
    setReason(invalidPath(path).get());
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExInvalidPath);

// The class alone tells it from an invalid path; the message is the same.
OsFileEx::ExPathNotWritable::ExPathNotWritable(char const* file, int line, char const* path)
    : std::invalid_argument(""), ExBase(file, line)
{
    setReason(invalidPath(path).get());
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExPathNotWritable);

OsFileEx::ExNoRemoteUnbuffered::ExNoRemoteUnbuffered(char const* file, int line, char const* path)
    : std::runtime_error(""), ExBase(file, line)
{
    setReason(ExReasonText("Unbuffered IO is impossible on a remote drive: '%.*s' is a remote path.", pathLimit,
                           ExReasonText::orEmpty(path))
                  .get());
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExNoRemoteUnbuffered);

}  // namespace Vn
