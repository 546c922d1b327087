#include <base/osfile.h>

#include <base/duplicatestring.h>
#include <base/exsyserror.h>
#include <base/osfile_p.h>
#include <base/osfileex.h>
#include <base/osfilehandle_p.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osfile";
constexpr char systemSourceName[] = "src/base/osfilewindows";
constexpr std::int32_t readAccess = 1;
constexpr std::int32_t writeAccess = 2;
constexpr std::int32_t anyAccess = 7;
constexpr std::uint32_t largestTransfer = 0x7FFFFFFF;
constexpr unsigned long blockSize = 0x10000;

void requirePath(OsFilePath const& path, int line)
{
    if (path.isEmpty())
        throw OsFileEx::ExNullFilePath(sourceName, line);
}

/// Through the virtual table: a class may know better what exists.
void requireExisting(OsFile const& file, int line)
{
    if (!file.exists())
        throw OsFileEx::ExInvalidPath(sourceName, line, file.getPath().getChars());
}

/// The interface lets a subclass keep the answer, so getType() isn't const; what asks by it is.
OsFileTypes::ElementType typeOf(OsFile const& file)
{
    return const_cast<OsFile&>(file).getType();
}

void requireSuccess(bool isDone, int line)
{
    if (!isDone)
        throw ExSysErrorWindows(systemSourceName, line);
}

/// False as well if either is missing.
bool isSameFile(OsFilePath const& path, OsFilePath const& other)
{
    System::FileIdentity identity;
    System::FileIdentity otherIdentity;
    return System::identify(path.getChars(), identity) && System::identify(other.getChars(), otherIdentity) &&
           identity == otherIdentity;
}

/// A writer that takes no byte of what is left has found the device full, and the system's error says so.
void writeWhole(OsFileWriter& writer, char const* bytes, std::uint32_t count)
{
    while (count > 0) {
        const std::uint32_t written = writer.write(bytes, count);
        requireSuccess(written != 0, __LINE__);
        bytes += written;
        count -= written;
    }
}

void copyBytes(OsFileReader& reader, OsFileWriter& writer)
{
    char block[blockSize];
    while (const std::uint32_t count = reader.read(block, sizeof block))
        writeWhole(writer, block, count);
}
}  // namespace

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

std::int32_t OsFile::getAccess() const
{
    requirePath(_path, __LINE__);
    try {
        return performGetAccess(anyAccess);
    } catch (...) {
        return 0;
    }
}

bool OsFile::isReadable() const
{
    requirePath(_path, __LINE__);
    try {
        return performGetAccess(readAccess) != 0;
    } catch (...) {
        return false;
    }
}

bool OsFile::isWritable() const
{
    requirePath(_path, __LINE__);
    try {
        return performGetAccess(writeAccess) != 0;
    } catch (...) {
        return false;
    }
}

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

bool OsFile::exists() const
{
    requirePath(_path, __LINE__);
    return OsFsUtils::fileExists(_path.getChars());
}

void OsFile::refreshInfo() const {}

void OsFile::remove()
{
    requirePath(_path, __LINE__);
    performRemove();
}

void OsFile::renameTo(OsFilePath const& target)
{
    requirePath(_path, __LINE__);
    requirePath(target, __LINE__);
    performRenameTo(target);
}

void OsFile::copyTo(OsFilePath const& target)
{
    requirePath(_path, __LINE__);
    requirePath(target, __LINE__);
    OsFilePath workingCopy(target);
    if (OsFsUtils::fileExists(target.getChars())) {
        OsFile existing(target);
        if (existing.getType() == OsFileTypes::Directory)
            workingCopy += getPath().getBaseName();
        else if (!existing.isWritable())
            throw OsFileEx::ExPathNotWritable(sourceName, __LINE__, target.getChars());
    }
    // Opening the target would empty the source.
    if (isSameFile(_path, workingCopy))
        throw OsFileEx::ExFileExists(sourceName, __LINE__);

    OsFileReader reader(*this);
    OsFileWriter writer(workingCopy, OsFileTypes::Permissions(3, 3, 0), false);
    copyBytes(reader, writer);
    writer.close();
    reader.close();
}

void OsFile::create(OsFileTypes::Permissions const& permissions, bool failIfExists)
{
    requirePath(_path, __LINE__);
    OsFsUtils::createFile(_path.getChars(), permissions, failIfExists);
}

std::int64_t OsFile::open(int mode) const
{
    requirePath(_path, __LINE__);
    return performOpen(mode);
}

void OsFile::close(std::int64_t handle) const
{
    requireSuccess(System::closeFile(handle), __LINE__);
}

void OsFile::setPath(OsFilePath const& path)
{
    _path = path;
}

ArrayPtrRet<char> OsFile::performGetOwner() const
{
    std::string owner;
    requireSuccess(System::readOwner(_path.getChars(), owner), __LINE__);
    return duplicateString(owner.c_str());
}

std::uint32_t OsFile::performGetSize() const
{
    std::uint32_t size;
    requireSuccess(System::readSize(_path.getChars(), size), __LINE__);
    return size;
}

ObjPtrRet<OsDateTypes::DateRep> OsFile::performGetLastModificationTime() const
{
    return ObjPtrRet<OsDateTypes::DateRep>(
        System::readTime(_path.getChars(), System::FileTime::LastModification, systemSourceName));
}

ObjPtrRet<OsDateTypes::DateRep> OsFile::performGetLastAccessTime() const
{
    return ObjPtrRet<OsDateTypes::DateRep>(
        System::readTime(_path.getChars(), System::FileTime::LastAccess, systemSourceName));
}

ObjPtrRet<OsFileTypes::UnbufferedInfo> OsFile::performGetUnbufferedInfo() const
{
    std::string place;
    bool isRemote;
    requireSuccess(System::readPlace(_path.getChars(), place, isRemote), __LINE__);
    if (isRemote)
        throw OsFileEx::ExNoRemoteUnbuffered(systemSourceName, __LINE__, place.c_str());
    return ObjPtrRet<OsFileTypes::UnbufferedInfo>(new OsFileTypes::UnbufferedInfo(0, 0, largestTransfer));
}

std::int32_t OsFile::performGetAccess(std::int32_t mask) const
{
    std::int32_t access = 0;
    if ((mask & readAccess) != 0 && System::hasAccess(_path.getChars(), readAccess))
        access += readAccess;
    if ((mask & writeAccess) != 0 && System::hasAccess(_path.getChars(), writeAccess))
        access += writeAccess;
    return access;
}

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

void OsFile::performRenameTo(OsFilePath const& target)
{
    requireSuccess(System::renameFile(_path.getChars(), target.getChars()), __LINE__);
    setPath(target);
}

}  // namespace Vn
