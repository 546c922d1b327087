#pragma once

#include <base/baseexport.h>
#include <base/insingleton.h>

#include <cstdint>
#include <iosfwd>

namespace VnInit
{
class heapMgr;
}  // namespace VnInit

namespace Vn
{

template <class Tag>
class InInit;

/// Policy of the program's heap: how careful it is, what it reports. Behind this interface stands the compiler's
/// heap, which keeps every setting and acts on none.
///
///     Vn::HmHeapMgr& heap = Vn::HmHeapMgr::getInstance();
///     const bool before = heap.setCheckAllMemory(true);
///     heap.dumpMallocStats(std::cout);
///
/// Alive from the start of the package `heapMgr` to its stop. The environment gives the first settings
/// (docs/heap-and-build.md has the table); each setter hands back the former value. Nothing is locked: settings
/// belong to the start.
/// Tests: tests/base/hmheapmgrtest.cpp.
class VN_BASE_EXPORT HmHeapMgr
{
public:
    /// How much a heap does to find misuse.
    enum SafetyLevel : std::int32_t
    {
        SafetySome = 0,  ///< the fewest checks
        SafetyFull = 1,  ///< the default
        SafetyDebug = 2  ///< the most checks
    };

    /// What a pointer was allocated as; no operation here looks at it.
    enum PtrType : std::int32_t
    {
        AnyPtr = 0  ///< the only one
    };

    /// What a pointer may be used for; no operation here looks at it.
    enum PtrProtect : std::int32_t
    {
        NoProtection = 0  ///< the only one
    };

    /// The settings as the environment has them.
    HmHeapMgr();
    /// @{
    /// Takes the settings of the other one.
    HmHeapMgr(HmHeapMgr const&);
    HmHeapMgr& operator=(HmHeapMgr const&);
    /// @}
    virtual ~HmHeapMgr();

    /// For a heap that can stop in a debugger; does nothing here.
    virtual void breakpoint();

    /// For a heap that can look through its blocks; does nothing here.
    virtual void checkHeap() const;

    /// Whether the heap knows that pointer; this one says so of any.
    virtual bool isValid(void* pointer, unsigned long size, PtrType type);

    /// For a heap that frees late; does nothing here.
    virtual void freeDeferred() const;

    /// For a heap that numbers its allocations; 0 here.
    virtual unsigned setCheckPoint(unsigned number);

    /// For a heap that must be told that threads begin; does nothing here.
    virtual void initMultiThread();

    /// For a heap that can guard blocks; does nothing here.
    virtual void protectPtr(void* pointer, PtrProtect protection);

    /// @{
    /// A report on the heap, on one pointer, or on the allocator's figures: here two lines that name this heap, and
    /// one line each that says there is nothing to tell. Not even null is looked at.
    virtual void dump(std::ostream& stream) const;
    virtual void dumpPtrInfo(void* pointer, std::ostream& stream) const;
    virtual void dumpMallocStats(std::ostream& stream) const;
    /// @}

    /// @{
    /// Keeps the setting, and returns the one before. Nothing acts on it here.
    ///
    ///     const bool before = heap.setDumpLeaks(true);
    ///     heap.setDumpLeaks(before);
    ///
    virtual SafetyLevel setSafetyLevel(SafetyLevel level);
    virtual bool setContinueOnError(bool doesContinue);
    virtual bool setUseDefaultHandler(bool usesDefault);
    virtual bool setDumpHeapInfo(bool dumps);
    virtual bool setCheckAllMemory(bool checks);
    virtual bool setDumpLeaks(bool dumps);
    /// @}

    /// For a heap that knows the allocations between two check points; does nothing here.
    virtual void reportLeakage(unsigned first, unsigned last) const;

    /// Whether blocks are freed late, so that a use after the free is found. Returns the setting before.
    virtual bool setDoDeferFreeing(bool defers);

    /// How many blocks wait to be freed, in blocks. Returns the setting before.
    virtual unsigned long setDeferQueueLen(unsigned long length);

    /// The size that late freeing goes by, in bytes. Returns the setting before.
    virtual unsigned long setDeferSizeThreshold(unsigned long size);

    /// How often the whole heap is checked, in allocations. Returns the setting before.
    virtual unsigned setCheckFrequency(unsigned frequency);

    /// @{
    /// The setting as it stands: from the environment, or what was set last. Whether output goes to the prompt comes
    /// from the environment alone.
    SafetyLevel getSafetyLevel() const { return _safetyLevel; }
    bool isOutput2Prompt() const { return _output2Prompt; }
    bool isContinueOnError() const { return _continueOnError; }
    bool isUseDefaultErrorHandler() const { return _useDefaultErrorHandler; }
    bool isDumpHeapInfo() const { return _dumpHeapInfo; }
    bool isCheckAllMemory() const { return _checkAllMemory; }
    bool isDumpLeaks() const { return _dumpLeaks; }
    bool isDoDeferFreeing() const { return _doDeferFreeing; }
    unsigned long getDeferQueueLen() const { return _deferQueueLen; }
    unsigned long getDeferSizeThreshold() const { return _deferSizeThreshold; }
    unsigned getCheckFrequency() const { return _checkFrequency; }
    /// @}

    /// The one manager. Throws InSingletonEx::ExNotInitialized outside its life.
    static HmHeapMgr& getInstance();

private:
    friend class InInit<VnInit::heapMgr>;  // makes the one

    static HmHeapMgr* create();

    SafetyLevel _safetyLevel;
    bool _output2Prompt;
    bool _continueOnError;
    bool _useDefaultErrorHandler;
    bool _dumpHeapInfo;
    bool _checkAllMemory;
    bool _dumpLeaks;
    bool _doDeferFreeing;
    unsigned long _deferQueueLen;
    unsigned long _deferSizeThreshold;
    std::uint32_t _checkFrequency;
};

extern template class VN_BASE_EXPORT InSingleton<HmHeapMgr>;

}  // namespace Vn
