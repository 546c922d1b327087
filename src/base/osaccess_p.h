// Private to the library.
#pragma once

#include <cstdint>

namespace Vn::System
{

/// The bits of an access mode: what OsFile::getAccess() returns, what a file is opened for, and what one party of
/// OsFileTypes::Permissions may do.
///
///     readAccess + writeAccess  ->  3, for reading and writing
///
constexpr std::int32_t readAccess = 1;
constexpr std::int32_t writeAccess = 2;

/// Every bit that may be asked for. Intended: the third one, 4, is never answered; do not mend.
constexpr std::int32_t anyAccess = 7;

/// Whether `access` has the given bit.
constexpr bool hasBit(std::int32_t access, std::int32_t bit)
{
    return (access & bit) != 0;
}

}  // namespace Vn::System
