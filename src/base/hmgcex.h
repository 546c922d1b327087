#pragma once

#include <base/exbase.h>

namespace Vn
{

/// Holds the exception of HmGC.
/// Tests: tests/base/hmgctest.cpp.
class VN_BASE_EXPORT HmGCEx
{
public:
    class ExGarbageDetected;

    HmGCEx() = delete;
};

/// A piece of code has left memory behind. No standard exception: nobody should catch it by chance.
class VN_BASE_EXPORT HmGCEx::ExGarbageDetected : public ExBase
{
public:
    /// The place of the throw.
    ExGarbageDetected(char const* file, int line);

    /// The reason, as getReason() gives it.
    virtual char const* what() const noexcept;

    /// A copy, which the caller owns.
    ExBase* clone() const override;
};

}  // namespace Vn
