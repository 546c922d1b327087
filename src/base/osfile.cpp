// An operation has three layers, each with its own part of the rules:
//
//     getSize()           checks: the path isn't empty, or something exists there; asked through the virtual exists()
//     performGetSize()    asks the system, and throws with a source name of its own if that fails
//     System::readSize()  makes the call: osfile_p.h, osfilehandle_p.h and their two forms
//
// The rules are the same on every system; only the last layer differs. Nothing is remembered between two calls, and
// another process may change the file between the check and the question: the question then fails with the system's
// error instead of the check's exception.
//
// copyTo() is the one operation with rules of its own. It decides where the copy goes, refuses to copy a file onto
// itself, and only then opens anything; from there on the target is being replaced. A failure leaves the part that
// has been copied.
#include <base/osfile.h>

#include <base/duplicatestring.h>
#include <base/exsyserror.h>
#include <base/osaccess_p.h>
#include <base/osfile_p.h>
#include <base/osfilecopy_p.h>
#include <base/osfileex.h>
#include <base/osfilehandle_p.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>

#include <optional>
#include <string>
#include <utility>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osfile";
constexpr char systemSourceName[] = "src/base/osfilewindows";
constexpr std::uint32_t largestTransfer = 0x7FFFFFFF;  ///< bytes that a file takes at once without a buffer
constexpr unsigned long blockSize = 0x10000;           ///< bytes of a copy's buffer, which is on the stack

using System::anyAccess;
using System::readAccess;
using System::writeAccess;

void requirePath(OsFilePath const& path, int line)
{
    if (path.isEmpty())
        throw OsFileEx::ExNullFilePath(sourceName, line);
}

/// Through the virtual exists(): a derived class may have its own idea of what exists.
void requireExisting(OsFile const& file, int line)
{
    if (!file.exists())
        throw OsFileEx::ExInvalidPath(sourceName, line, file.getPath().getChars());
}

/// getType() isn't const, so that a derived class may cache the answer; isFile() and isDirectory() are, and call it.
OsFileTypes::ElementType typeOf(OsFile const& file)
{
    return const_cast<OsFile&>(file).getType();
}

void requireSuccess(bool isDone, int line)
{
    if (!isDone)
        throw ExSysErrorWindows(systemSourceName, line);
}

/// What the system has answered; throws its error if it has refused.
template <class T>
T requireAnswer(std::optional<T> answer, int line)
{
    requireSuccess(answer.has_value(), line);
    return std::move(*answer);
}

/// False as well if either path leads to nothing.
bool isSameFile(OsFilePath const& path, OsFilePath const& other)
{
    const std::optional<System::FileIdentity> identity = System::identify(path.getChars());
    return identity && identity == System::identify(other.getChars());
}

/// Throws if the device is full: the writer then takes no more bytes, and the system's error is still set.
void writeWhole(OsFileWriter& writer, char const* bytes, std::uint32_t count)
{
    while (count > 0) {
        const std::uint32_t written = writer.write(bytes, count);
        requireSuccess(written != 0, __LINE__);
        bytes += written;
        count -= written;
    }
}
}  // namespace

void FileCopy::run(OsFileReader& reader, OsFileWriter& writer)
{
    char block[blockSize];
    std::uint32_t count = reader.read(block, sizeof block);
    // Not for a small file, for which these calls would be as many as they save.
    bool isLarge = count == sizeof block;
    if (isLarge && System::shareBlocks(reader._handle, writer._handle)) {
        isLarge = false;
        count = reader.read(block, sizeof block);  // the end, unless the file has grown
    }
    for (; count != 0; count = reader.read(block, sizeof block)) {
        writeWhole(writer, block, count);
        if (isLarge)
            System::copyRange(reader._handle, writer._handle);
        isLarge = false;
    }
}

OsFile::OsFile(OsFilePath const& path) : _path(path) {}

OsFile::~OsFile() = default;

ArrayPtrRet<char> OsFile::getOwner()
{
    requireExisting(*this, __LINE__);
    return performGetOwner();
}

std::uint32_t OsFile::getSize() const
{
    requireExisting(*this, __LINE__);
    return performGetSize();
}

ObjPtrRet<OsDateTypes::DateRep> OsFile::getLastModificationTime()
{
    requireExisting(*this, __LINE__);
    return performGetLastModificationTime();
}

ObjPtrRet<OsDateTypes::DateRep> OsFile::getLastAccessTime()
{
    requireExisting(*this, __LINE__);
    return performGetLastAccessTime();
}

ObjPtrRet<OsFileTypes::UnbufferedInfo> OsFile::getUnbufferedInfo()
{
    requireExisting(*this, __LINE__);
    return performGetUnbufferedInfo();
}

// These three have no failure but the empty path: what can't be found out counts as no access.

std::int32_t OsFile::getAccess() const
{
    requirePath(_path, __LINE__);
    return performGetAccess(anyAccess);
}

bool OsFile::isReadable() const
{
    requirePath(_path, __LINE__);
    return performGetAccess(readAccess) != 0;
}

bool OsFile::isWritable() const
{
    requirePath(_path, __LINE__);
    return performGetAccess(writeAccess) != 0;
}

// Intended: these three throw for a path at which nothing exists, unlike their namesakes in OsFsUtils. Do not mend:
// OsFile reports a missing file, OsFsUtils tolerates it.

bool OsFile::isFile() const
{
    return typeOf(*this) == OsFileTypes::RegularFile;
}

bool OsFile::isDirectory() const
{
    return typeOf(*this) == OsFileTypes::Directory;
}

bool OsFile::isSymLink() const
{
    requireExisting(*this, __LINE__);
    return OsFsUtils::isSymLink(_path.getChars());
}

OsFileTypes::ElementType OsFile::getType()
{
    requireExisting(*this, __LINE__);
    return performGetType();
}

// A path that the system does not let us look at counts as one at which nothing exists.
bool OsFile::exists() const
{
    requirePath(_path, __LINE__);
    return OsFsUtils::fileExists(_path.getChars());
}

// Intended: empty, as nothing is cached. Do not mend: the operation is for derived classes that cache.
void OsFile::refreshInfo() const {}

// A directory is refused by the system: OsDirectory removes these.
void OsFile::remove()
{
    requirePath(_path, __LINE__);
    performRemove();
}

// The target may be in another directory, but not on another file system; a file that is there is not replaced.
void OsFile::renameTo(OsFilePath const& target)
{
    requirePath(_path, __LINE__);
    requirePath(target, __LINE__);
    performRenameTo(target);
}

// Into a directory under the own name; onto a file that may be written, which is emptied first; never onto itself.
void OsFile::copyTo(OsFilePath const& target)
{
    requirePath(_path, __LINE__);
    requirePath(target, __LINE__);
    OsFilePath workingCopy(target);
    // One question for all: what is missing can't be a directory, nor unwritable, nor the source.
    const System::FileKind existing = System::getFileKind(target.getChars());
    if (existing == System::FileKind::Directory)
        workingCopy += getPath().getBaseName();
    // Opening the target would empty the source. Asked first: on Windows isWritable() opens the target.
    if (existing != System::FileKind::Missing && isSameFile(_path, workingCopy))
        throw OsFileEx::ExFileExists(sourceName, __LINE__);
    if (existing != System::FileKind::Missing && existing != System::FileKind::Directory &&
        !OsFile(target).isWritable())
        throw OsFileEx::ExPathNotWritable(sourceName, __LINE__, target.getChars());

    // Intended: times, attributes and permissions are not carried over. Do not mend: the copy is a new file.
    OsFileReader reader(*this);
    OsFileWriter writer(workingCopy, OsFileTypes::Permissions(3, 3, 0), false);
    FileCopy::run(reader, writer);
    writer.close();
    reader.close();
}

// Through OsFsUtils, so that both have the same exceptions and the same source name for them.
void OsFile::create(OsFileTypes::Permissions const& permissions, bool failIfExists)
{
    requirePath(_path, __LINE__);
    OsFsUtils::createFile(_path.getChars(), permissions, failIfExists);
}

// For derived classes, which own the handle and give it back with close().
std::int64_t OsFile::open(int mode) const
{
    requirePath(_path, __LINE__);
    return performOpen(mode);
}

void OsFile::close(std::int64_t handle) const
{
    requireSuccess(System::closeFile(handle) == System::CloseResult::Closed, __LINE__);
}

// For derived classes. Nothing is asked of the system, so the path may name anything, or nothing.
void OsFile::setPath(OsFilePath const& path)
{
    _path = path;
}

// --- asking the system; failures have the source name of the platform's form on every system -----------------------

ArrayPtrRet<char> OsFile::performGetOwner() const
{
    const std::string owner = requireAnswer(System::readOwner(_path.getChars()), __LINE__);
    return duplicateString(owner.c_str());
}

std::uint32_t OsFile::performGetSize() const
{
    return requireAnswer(System::readSize(_path.getChars()), __LINE__);
}

ObjPtrRet<OsDateTypes::DateRep> OsFile::performGetLastModificationTime() const
{
    return ObjPtrRet<OsDateTypes::DateRep>(
        System::readTime(_path.getChars(), System::FileTime::LastModification, systemSourceName).release());
}

ObjPtrRet<OsDateTypes::DateRep> OsFile::performGetLastAccessTime() const
{
    return ObjPtrRet<OsDateTypes::DateRep>(
        System::readTime(_path.getChars(), System::FileTime::LastAccess, systemSourceName).release());
}

ObjPtrRet<OsFileTypes::UnbufferedInfo> OsFile::performGetUnbufferedInfo() const
{
    const System::FilePlace place = requireAnswer(System::readPlace(_path.getChars()), __LINE__);
    if (place.isRemote)
        throw OsFileEx::ExNoRemoteUnbuffered(systemSourceName, __LINE__, place.name.c_str());
    // Neither system demands an alignment or a block size of those who read and write through it.
    return ObjPtrRet<OsFileTypes::UnbufferedInfo>(new OsFileTypes::UnbufferedInfo(0, 0, largestTransfer));
}

std::int32_t OsFile::performGetAccess(std::int32_t mask) const
{
    std::int32_t access = 0;
    for (const std::int32_t bit : {readAccess, writeAccess})
        if (System::hasBit(mask, bit) && System::hasAccess(_path.getChars(), bit))
            access += bit;
    return access;
}

// The file may have vanished since the check, and then the system's error is still that of the question.
OsFileTypes::ElementType OsFile::performGetType() const
{
    switch (System::getFileKind(_path.getChars())) {
    case System::FileKind::Missing:
        throw ExSysErrorWindows(systemSourceName, __LINE__);
    case System::FileKind::Directory:
        return OsFileTypes::Directory;
    case System::FileKind::SpecialFile:
        return OsFileTypes::SpecialFile;
    default:
        return OsFileTypes::RegularFile;
    }
}

// Other readers and writers may open the file meanwhile. A directory can't be opened.
std::int64_t OsFile::performOpen(int mode) const
{
    const std::int64_t handle = System::openFile(_path.getChars(), mode);
    requireSuccess(handle != System::closedHandle, __LINE__);
    return handle;
}

void OsFile::performRemove()
{
    requireSuccess(System::removeFile(_path.getChars()), __LINE__);
}

// From here on the object names the new place.
void OsFile::performRenameTo(OsFilePath const& target)
{
    requireSuccess(System::renameFile(_path.getChars(), target.getChars()), __LINE__);
    setPath(target);
}

}  // namespace Vn
