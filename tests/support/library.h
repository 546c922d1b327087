#pragma once

#include <string>

namespace VnTest
{

/// A shared library from the test program's folder, loaded while this object lives.
class Library
{
public:
    explicit Library(char const* name);
    ~Library();
    Library(Library const&) = delete;
    Library& operator=(Library const&) = delete;

    /// Whether anybody has that library loaded.
    static bool isLoaded(char const* name);

    template <class Function>
    Function* find(char const* name) const
    {
        return reinterpret_cast<Function*>(findAddress(name));
    }

private:
    using Address = void (*)();
    Address findAddress(char const* name) const;

    void* _handle;
};

}  // namespace VnTest
