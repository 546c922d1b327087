// An entry owns its path as an array, whose owner transfers on copying: so the copy constructor duplicates the text,
// and the assignment takes its operand by value and takes over what that holds. It serves for copies and moves, and
// throws nothing itself.
#include <base/lmlibrary.h>

#include <base/duplicatestring.h>

#include <cstring>
#include <utility>

namespace Vn
{
namespace
{
constexpr char unknownPath[] = "Unknown";  ///< of a module whose file is not known
}  // namespace

LmBlock::LmBlock(std::uintptr_t address, std::uintptr_t size, unsigned flags)
    : _flags(flags), _baseAddress(address), _address(address), _size(size)
{}

LmLibrary::LmLibrary(std::uintptr_t address)
    : _baseAddress(address), _address(address), _path(duplicateString(unknownPath))
{}

LmLibrary::LmLibrary(LmLibrary const& other)
    : _baseAddress(other._baseAddress),
      _address(other._address),
      _path(duplicateString(other._path)),
      _blocks(other._blocks)
{}

LmLibrary& LmLibrary::operator=(LmLibrary other) noexcept
{
    // Assigning the path transfers it from `other`, which is a copy already.
    _baseAddress = other._baseAddress;
    _address = other._address;
    _path = other._path;
    _blocks.swap(other._blocks);
    return *this;
}

LmLibrary::~LmLibrary() = default;

// Copies the text, which may be in a buffer of the system's.
void LmLibrary::setPath(char const* path)
{
    _path = duplicateString(path != nullptr ? path : unknownPath);
}

// The paths by their text: two lists that were made one after the other have arrays of their own.
bool operator==(LmLibrary const& left, LmLibrary const& right)
{
    return left._baseAddress == right._baseAddress && left._address == right._address &&
           std::strcmp(left._path, right._path) == 0 && left._blocks == right._blocks;
}

}  // namespace Vn
