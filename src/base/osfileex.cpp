// The texts are part of the interface: programs and their tests compare them. The standard base gets an empty text in
// each class, because what() is overridden to return the reason of ExBase. Then the message exists once, and cutting
// it never allocates.
#include <base/osfileex.h>

#include <base/exreasontext_p.h>

namespace Vn
{
namespace
{
// Within the 1,023 characters of a reason, the longest text included.
constexpr int pathLimit = 256;  ///< bytes of a path that a message shows

/// The text that two of the classes share.
ExReasonText invalidPath(char const* path)
{
    return ExReasonText("Invalid path: '%.*s'.", pathLimit, ExReasonText::orEmpty(path));
}
}  // namespace

// The classes of paths: joining, and the home directory.

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

// The classes of files and directories. "Null" is the empty path: a path object is never without a text.

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

// `path` is copied into the reason, cut; it need not outlive this call.
OsFileEx::ExInvalidPath::ExInvalidPath(char const* file, int line, char const* path)
    : std::invalid_argument(""), ExBase(file, line)
{
    setReason(invalidPath(path).get());
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExInvalidPath);

// Intended: the text is that of ExInvalidPath, and only the class tells the two apart. Do not mend: message texts are
// part of the interface.
OsFileEx::ExPathNotWritable::ExPathNotWritable(char const* file, int line, char const* path)
    : std::invalid_argument(""), ExBase(file, line)
{
    setReason(invalidPath(path).get());
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExPathNotWritable);

// The place is what the system was asked about: the path on Linux, the root of its drive on Windows.
OsFileEx::ExNoRemoteUnbuffered::ExNoRemoteUnbuffered(char const* file, int line, char const* path)
    : std::runtime_error(""), ExBase(file, line)
{
    setReason(ExReasonText("Unbuffered IO is impossible on a remote drive: '%.*s' is a remote path.", pathLimit,
                           ExReasonText::orEmpty(path))
                  .get());
}

VN_EX_DEFINE_MEMBERS(OsFileEx::ExNoRemoteUnbuffered);

}  // namespace Vn
