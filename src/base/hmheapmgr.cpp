// The heap's policy: settings read from the environment when the package `heapMgr` starts, and operations for a heap
// that is managed.
//
// The compiler's heap has no such operations, so with it they do nothing or give the answer that does no harm: every
// pointer is valid, every checkpoint is 0. The settings are kept and returned all the same, for programs that read
// them.
#include <base/hmheapmgr.h>

#include <base/osenv_p.h>
#include <base/wholenumber_p.h>

#include <cstdlib>
#include <cstring>
#include <ostream>
#include <utility>

namespace Vn
{
namespace
{
/// Any other word, and an unset variable, leave the level as it is.
void readSafetyLevel(HmHeapMgr::SafetyLevel& level)
{
    // To the letter: "Full" is no level.
    constexpr char const* words[] = {"some", "full", "debug"};  // by value
    char const* const value = System::getOwnVariable("VN_HEAP_SAFETY_LEVEL");
    for (int i = 0; value != nullptr && i < 3; ++i)
        if (std::strcmp(value, words[i]) == 0)
            level = static_cast<HmHeapMgr::SafetyLevel>(i);
}

/// Intended: an unset variable makes the flag false, also the one that is true by default. Programs set what they
/// want; do not mend.
void readFlag(char const* name, bool& flag)
{
    char const* const value = System::getOwnVariable(name);
    flag = value != nullptr && wholeNumberOf<int>(value) > 0;
}

/// An unset variable leaves the number as it is. `Integer` is the type of the conversion: a negative text wraps in an
/// unsigned setting.
template <class Integer, class T>
void readNumber(char const* name, T& number)
{
    if (char const* const value = System::getOwnVariable(name))
        number = static_cast<T>(wholeNumberOf<Integer>(value));
}
}  // namespace

/// Compiled here, so that all libraries share the one instance.
template class InSingleton<HmHeapMgr>;

/// The defaults, then the environment. Each variable is looked up once, here.
HmHeapMgr::HmHeapMgr()
    : _safetyLevel(SafetyFull),
      _output2Prompt(false),
      _continueOnError(false),
      _useDefaultErrorHandler(false),
      _dumpHeapInfo(false),
      _checkAllMemory(false),
      _dumpLeaks(false),
      _doDeferFreeing(true),
      _deferQueueLen(1000),
      _deferSizeThreshold(4096),
      _checkFrequency(1000)
{
    readSafetyLevel(_safetyLevel);
    readFlag("VN_HEAP_OUTPUT_PROMPT", _output2Prompt);
    readFlag("VN_HEAP_CONTINUE_ON_UNRECOVERABLE_ERROR", _continueOnError);
    readFlag("VN_HEAP_USE_DEFAULT_ERROR_HANDLER", _useDefaultErrorHandler);
    readFlag("VN_HEAP_DUMP_INFO", _dumpHeapInfo);
    readFlag("VN_HEAP_CHECK_MEMORY", _checkAllMemory);
    readFlag("VN_HEAP_DUMP_LEAKS", _dumpLeaks);
    readFlag("VN_HEAP_DO_DEFER_FREEING", _doDeferFreeing);
    readNumber<long>("VN_HEAP_DEFER_QUEUE_LEN", _deferQueueLen);
    readNumber<long>("VN_HEAP_DEFER_SIZE_THRESHOLD", _deferSizeThreshold);
    readNumber<int>("VN_HEAP_CHECK_FREQUENCY", _checkFrequency);
}

/// Out of line, as the members are part of the exported interface.
HmHeapMgr::HmHeapMgr(HmHeapMgr const&) = default;

HmHeapMgr& HmHeapMgr::operator=(HmHeapMgr const&) = default;

/// With the package's stop, by the singleton.
HmHeapMgr::~HmHeapMgr() = default;

/// For the package `heapMgr`, which installs the result as the singleton.
HmHeapMgr* HmHeapMgr::create()
{
    return new HmHeapMgr;
}

/// Throws before the package `heapMgr` has started and after it has stopped.
HmHeapMgr& HmHeapMgr::getInstance()
{
    return InSingleton<HmHeapMgr>::getInstance();
}

/// A place for a debugger to stop at.
void HmHeapMgr::breakpoint() {}

/// Nothing to check: the compiler's heap shows no blocks.
void HmHeapMgr::checkHeap() const {}

/// A heap that can't tell says yes: a program must not stop over a pointer that is right.
bool HmHeapMgr::isValid(void*, unsigned long, PtrType)
{
    return true;
}

/// Nothing is deferred, whatever setDoDeferFreeing() was told.
void HmHeapMgr::freeDeferred() const {}

/// No checkpoints, so leaks since one can't be told either: see reportLeakage().
unsigned HmHeapMgr::setCheckPoint(unsigned)
{
    return 0;
}

/// The compiler's heap is thread-safe from the start.
void HmHeapMgr::initMultiThread() {}

/// The compiler's heap can't protect single blocks.
void HmHeapMgr::protectPtr(void*, PtrProtect) {}

/// The three texts are part of the interface: programs compare them.
void HmHeapMgr::dump(std::ostream& stream) const
{
    stream << "*************** Default (compiler's) heap manager ***************\n"
              "*****************************************************************\n";
}

void HmHeapMgr::dumpPtrInfo(void*, std::ostream& stream) const
{
    stream << "Ptr info not available with compiler's heap\n";
}

void HmHeapMgr::dumpMallocStats(std::ostream& stream) const
{
    stream << "Malloc stats not available with compiler's heap\n";
}

/// All setters return the former value, so that a caller can restore it.
HmHeapMgr::SafetyLevel HmHeapMgr::setSafetyLevel(SafetyLevel level)
{
    return std::exchange(_safetyLevel, level);
}

bool HmHeapMgr::setContinueOnError(bool doesContinue)
{
    return std::exchange(_continueOnError, doesContinue);
}

bool HmHeapMgr::setUseDefaultHandler(bool usesDefault)
{
    return std::exchange(_useDefaultErrorHandler, usesDefault);
}

bool HmHeapMgr::setDumpHeapInfo(bool dumps)
{
    return std::exchange(_dumpHeapInfo, dumps);
}

bool HmHeapMgr::setCheckAllMemory(bool checks)
{
    return std::exchange(_checkAllMemory, checks);
}

bool HmHeapMgr::setDumpLeaks(bool dumps)
{
    return std::exchange(_dumpLeaks, dumps);
}

/// Between two checkpoints, of which this heap has none.
void HmHeapMgr::reportLeakage(unsigned, unsigned) const {}

bool HmHeapMgr::setDoDeferFreeing(bool defers)
{
    return std::exchange(_doDeferFreeing, defers);
}

unsigned long HmHeapMgr::setDeferQueueLen(unsigned long length)
{
    return std::exchange(_deferQueueLen, length);
}

unsigned long HmHeapMgr::setDeferSizeThreshold(unsigned long size)
{
    return std::exchange(_deferSizeThreshold, size);
}

unsigned HmHeapMgr::setCheckFrequency(unsigned frequency)
{
    return std::exchange(_checkFrequency, frequency);
}

}  // namespace Vn
