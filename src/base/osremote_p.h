// Private to osfilelinux.cpp.
#pragma once

#include <cstdint>

namespace Vn
{

/// Whether a file system of this magic number, as statfs() reports it, keeps its files on another machine. False for
/// unknown ones, and for FUSE, which does not tell.
///
///     0x6969  (NFS)   ->  true
///     0xEF53  (ext4)  ->  false
///
constexpr bool isRemoteFileSystem(std::uint32_t magic)
{
    switch (magic) {
    case 0x00006969:  // NFS
    case 0x0000517B:  // SMB
    case 0xFE534D42:  // SMB 2
    case 0xFF534D42:  // CIFS
    case 0x5346414F:  // AFS
    case 0x6B414653:  // AFS of the kernel
    case 0x00C36400:  // Ceph
    case 0x73757245:  // Coda
    case 0x0000564C:  // NCP
        return true;
    default:
        return false;  // local, or not known to be remote
    }
}

}  // namespace Vn
