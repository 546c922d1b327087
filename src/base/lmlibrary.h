#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/vector.h>

#include <cstdint>

namespace Vn
{

/// A block of memory of a loaded module, with one protection all over. A value.
/// Tests: tests/base/lmlibrariestest.cpp.
class VN_BASE_EXPORT LmBlock
{
public:
    enum Flags
    {
        Read = 4,
        Write = 8,
        Execute = 16,
        CopyOnWrite = 32
    };

    LmBlock(std::uintptr_t address, std::uintptr_t size, unsigned flags);

    unsigned getFlags() const { return _flags; }  ///< sum of Flags
    std::uintptr_t getBaseAddress() const { return _baseAddress; }
    std::uintptr_t getAddress() const { return _address; }  ///< the same
    std::uintptr_t getSize() const { return _size; }        ///< bytes

    friend bool operator==(LmBlock const&, LmBlock const&) = default;

private:
    unsigned _flags;
    std::uintptr_t _baseAddress;
    std::uintptr_t _address;
    std::uintptr_t _size;
};

/// A module that is loaded in this process: the program itself or a library. A value.
/// Tests: tests/base/lmlibrariestest.cpp.
class VN_BASE_EXPORT LmLibrary
{
public:
    /// The path is "Unknown" and there are no blocks.
    explicit LmLibrary(std::uintptr_t address);

    LmLibrary(LmLibrary const& other);
    LmLibrary(LmLibrary&&) noexcept = default;
    LmLibrary& operator=(LmLibrary other) noexcept;
    ~LmLibrary();

    std::uintptr_t getBaseAddress() const { return _baseAddress; }
    std::uintptr_t getAddress() const { return _address; }  ///< the same

    /// Name of the module's file.
    char const* getPath() const { return _path; }

    /// In the order of their addresses.
    Vector<LmBlock> const& getBlocks() const { return _blocks; }

    /// Copies the text; null is "Unknown".
    void setPath(char const* path);

    void reserveBlocks(std::size_t count) { _blocks.reserve(count); }
    void addBlock(LmBlock const& block) { _blocks.push_back(block); }

    friend VN_BASE_EXPORT bool operator==(LmLibrary const& left, LmLibrary const& right);

private:
    std::uintptr_t _baseAddress;
    std::uintptr_t _address;
    ArrayPtr<char> _path;
    Vector<LmBlock> _blocks;
};

}  // namespace Vn
