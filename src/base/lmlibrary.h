#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/vector.h>

#include <cstdint>

namespace Vn
{

/// A block of memory of a loaded module, with the same protection throughout. A value; LmLibraries fills it.
///
///     block.getFlags() & Vn::LmBlock::Write    // whether the program can write there
///
/// Tests: tests/base/lmlibrariestest.cpp.
class VN_BASE_EXPORT LmBlock
{
public:
    /// What the protection allows; the values add up.
    enum Flags
    {
        Read = 4,
        Write = 8,
        Execute = 16,
        CopyOnWrite = 32  ///< the first write gives the process a page of its own
    };

    /// A block of `size` bytes at `address`; nothing is checked. `flags` is a sum of Flags, 0 for no access.
    LmBlock(std::uintptr_t address, std::uintptr_t size, unsigned flags);

    /// @{
    /// What the block was made with. Both addresses are its first byte; the size is in bytes.
    unsigned getFlags() const { return _flags; }
    std::uintptr_t getBaseAddress() const { return _baseAddress; }
    std::uintptr_t getAddress() const { return _address; }
    std::uintptr_t getSize() const { return _size; }
    /// @}

    /// Equal in all of these.
    friend bool operator==(LmBlock const&, LmBlock const&) = default;

private:
    unsigned _flags;
    std::uintptr_t _baseAddress;
    std::uintptr_t _address;
    std::uintptr_t _size;
};

/// A module that is loaded in this process: the program itself or a library. A value that owns its text and blocks.
///
///     for (Vn::LmBlock const& block : library.getBlocks())
///         total += block.getSize();
///
/// Tests: tests/base/lmlibrariestest.cpp.
class VN_BASE_EXPORT LmLibrary
{
public:
    /// A module at `address`, with the path "Unknown" and no blocks.
    explicit LmLibrary(std::uintptr_t address);

    /// @{
    /// A copy has its own text and blocks. A module that was moved from has a null path: assign to it or destroy it.
    LmLibrary(LmLibrary const& other);
    LmLibrary(LmLibrary&&) noexcept = default;
    LmLibrary& operator=(LmLibrary other) noexcept;
    ~LmLibrary();
    /// @}

    /// @{
    /// Where the module begins in memory; the two are the same.
    std::uintptr_t getBaseAddress() const { return _baseAddress; }
    std::uintptr_t getAddress() const { return _address; }
    /// @}

    /// Path of the module's file, or "Unknown". Valid until setPath(), assignment or destruction.
    char const* getPath() const { return _path; }

    /// The module's memory, in the order of the addresses.
    Vector<LmBlock> const& getBlocks() const { return _blocks; }

    /// Copies the text; null means "Unknown".
    void setPath(char const* path);

    /// @{
    /// For building a list: allocates room for `count` blocks in all, appends one.
    void reserveBlocks(std::size_t count) { _blocks.reserve(count); }
    void addBlock(LmBlock const& block) { _blocks.push_back(block); }
    /// @}

    /// Equal in addresses, path text and all blocks.
    friend VN_BASE_EXPORT bool operator==(LmLibrary const& left, LmLibrary const& right);

private:
    std::uintptr_t _baseAddress;
    std::uintptr_t _address;
    ArrayPtr<char> _path;
    Vector<LmBlock> _blocks;
};

}  // namespace Vn
