#include <base/hmgc.h>

#include <base/hmleakfilter_p.h>

#include <new>

namespace Vn
{

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

bool HmGC::isMemDebugLoaded()
{
    return false;
}

bool HmGC::isLeakValid(ArrayPtr<char>* frames, char const* text) const
{
    return text == nullptr || !HmLeakFilter::knows(text, frames);
}

void HmGC::validateAndPrint(void*) {}

void HmGC::extractCallStack(void**, ArrayPtr<char>*, ArrayPtr<char>*) {}

void HmGC::printLeak(ArrayPtr<char>&, ArrayPtr<char>*) const {}

void HmGC::operator delete(void* memory)
{
    ::operator delete(memory);
}

}  // namespace Vn
