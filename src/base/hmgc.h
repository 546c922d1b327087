#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>

#include <iosfwd>

namespace Vn
{

/// Put around a piece of code, finds what that leaked, where the heap is one for debugging. The compiler's heap is
/// none: with it nothing is found, and isMemDebugLoaded() says so.
///
///     Vn::HmGC collector{};
///     collector.setThrowException(true);
///     run();
///
/// Lives on the stack only. Without the braces its settings have no values.
/// Tests: tests/base/hmgctest.cpp, fuzz/hmleakfilter.cpp.
class VN_BASE_EXPORT HmGC
{
public:
    HmGC() = default;
    /// @{
    /// Takes the settings of the other one.
    HmGC(HmGC const&) = default;
    HmGC& operator=(HmGC const&) = default;
    /// @}
    ~HmGC() = default;

    /// Where a report goes; not owned.
    void setOutput(std::ostream* output);

    /// Whether a leak is thrown as HmGCEx::ExGarbageDetected.
    void setThrowException(bool throws);

    /// Whether a report shows call stacks.
    void setStackDump(bool dumps);

    /// Whether the heap is one for debugging.
    static bool isMemDebugLoaded();

private:
    /// Whether a leak with the call stack `frames`, innermost first and ended by a pointer to nothing, is one to
    /// report: no record of `text` matches it. Null is a text without records.
    bool isLeakValid(ArrayPtr<char>* frames, char const* text) const;

    // For a heap for debugging; these do nothing here.
    void validateAndPrint(void* memory);
    void extractCallStack(void** stack, ArrayPtr<char>* functions, ArrayPtr<char>* places);
    void printLeak(ArrayPtr<char>& leak, ArrayPtr<char>* frames) const;

    static void operator delete(void* memory);

    std::ostream* _output;
    bool _throwException;
    bool _stackDump;
};

}  // namespace Vn
