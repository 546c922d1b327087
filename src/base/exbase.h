#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// Root of every exception of the family: a reason, a detailed reason and the place of the throw, all held by value.
///
///     catch (Vn::ExBase const& failure) {
///         std::cerr << failure.getDetailedReason() << '\n';
///     }
///
/// Nearly every concrete class is a standard exception as well, so a caller catches either and reads the same
/// message. This part allocates nothing. Text that doesn't fit is cut, never refused. An object belongs to one
/// thread: getDetailedReason() writes into it although it is const.
/// Tests: tests/base/exbasetest.cpp.
class VN_BASE_EXPORT ExBase
{
public:
    /// An exception without a reason, thrown in line `line` of the source `file`. The file is cut to 127 characters;
    /// null leaves it empty.
    ExBase(char const* file, int line);

    /// Takes the detailed reason along, if `other` has made it.
    ExBase(ExBase const& other);

    /// Copies reason, file and line. The detailed reason stays what it was: once made, it belongs to its object.
    ExBase const& operator=(ExBase const& other);

    /// The message; never null.
    virtual char const* getReason() const;

    /// Type, file and line in brackets, a line end, then the reason, cut to 1,023 characters. Made at the first call
    /// and kept: what the reason gains later doesn't reach it. Not thread-safe, although it is const.
    virtual char const* getDetailedReason() const;

    /// Destroys the concrete object.
    virtual ~ExBase();

    /// A copy of the concrete object, made with `new`; the caller owns it.
    virtual ExBase* clone() const = 0;

    /// Source file of the throw, up to 127 characters; empty if none was given.
    char const* getFileName() const;

    /// Line of the throw in that file, as it was given.
    int getLineNo() const;

protected:
    /// Appends to the reason, up to 1,023 characters in all; null is ignored.
    ///
    ///     setReason("No such cue: ");
    ///     setReason(name);               // "No such cue: opening"
    ///
    void setReason(char const* text);

private:
    void setFileName(char const* file);

    mutable char _detailedReason[1024];  ///< empty until it is asked for
    char _reason[1024];
    char _fileName[128];
    int _lineNo;
};

}  // namespace Vn

/// Declares in a concrete exception class what each of them has: the message under its standard name, and the copy.
/// VN_EX_DEFINE_MEMBERS with the class's full name stands in the source.
#define VN_EX_MEMBERS()                         \
    char const* what() const noexcept override; \
    Vn::ExBase* clone() const override

/// Defines what VN_EX_MEMBERS declares: VN_EX_DEFINE_MEMBERS(Vn::ExInternalError);
#define VN_EX_DEFINE_MEMBERS(CLASS)          \
    char const* CLASS::what() const noexcept \
    {                                        \
        return this->getReason();            \
    }                                        \
    Vn::ExBase* CLASS::clone() const         \
    {                                        \
        return new CLASS(*this);             \
    }                                        \
    static_assert(true, "a semicolon follows")
