// The leak collector without a heap that could tell it of leaks.
//
// The compiler's heap keeps no list of its blocks, so there is nothing to validate and nothing to print: the
// operations that would ask it do nothing, and a leak-checked run of a test group passes. What is complete is the
// filter of known leaks (hmleakfilter_p.h), which needs no heap.
#include <base/hmgc.h>

#include <base/hmleakfilter_p.h>

#include <new>

namespace Vn
{

/// Kept for a heap that reports leaks; nothing is written with this one.
void HmGC::setOutput(std::ostream* output)
{
    _output = output;
}

void HmGC::setThrowException(bool throws)
{
    _throwException = throws;
}

void HmGC::setStackDump(bool dumps)
{
    _stackDump = dumps;
}

/// Never with the compiler's heap: the driver of test programs warns then.
bool HmGC::isMemDebugLoaded()
{
    return false;
}

/// Without a list of known leaks every leak counts.
bool HmGC::isLeakValid(ArrayPtr<char>* frames, char const* text) const
{
    return text == nullptr || !HmLeakFilter::knows(text, frames);
}

void HmGC::validateAndPrint(void*) {}

void HmGC::extractCallStack(void**, ArrayPtr<char>*, ArrayPtr<char>*) {}

void HmGC::printLeak(ArrayPtr<char>&, ArrayPtr<char>*) const {}

/// Part of the interface: memory of these objects is released by this library, whatever heap a client has.
void HmGC::operator delete(void* memory)
{
    ::operator delete(memory);
}

}  // namespace Vn
