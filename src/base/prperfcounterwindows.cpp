// prperfcounterwindows.cpp (Windows only; prperfdata_p.h holds what any system can do)
//
// Reading the value "238" of the key HKEY_PERFORMANCE_DATA makes the system gather the data of object 238: it loads
// the libraries that supply them and fills our buffer with one block of records. PrPerfData then finds the counter in
// the block. Only the query is done here; buffers and records are handled by code that the tests run on every
// platform.
#include <base/prperfcounter_p.h>

#include <base/prperfdata_p.h>

#include <windows.h>
#include <winperf.h>

#include <cstddef>
#include <cstdio>

namespace Vn
{
namespace
{
// The layout that the portable code uses is the system's.
static_assert(PrPerfLayout::DataBlock::totalByteLength == offsetof(PERF_DATA_BLOCK, TotalByteLength));
static_assert(PrPerfLayout::DataBlock::headerLength == offsetof(PERF_DATA_BLOCK, HeaderLength));
static_assert(PrPerfLayout::DataBlock::size == sizeof(PERF_DATA_BLOCK));
static_assert(PrPerfLayout::Object::totalByteLength == offsetof(PERF_OBJECT_TYPE, TotalByteLength));
static_assert(PrPerfLayout::Object::definitionLength == offsetof(PERF_OBJECT_TYPE, DefinitionLength));
static_assert(PrPerfLayout::Object::headerLength == offsetof(PERF_OBJECT_TYPE, HeaderLength));
static_assert(PrPerfLayout::Object::nameTitleIndex == offsetof(PERF_OBJECT_TYPE, ObjectNameTitleIndex));
static_assert(PrPerfLayout::Object::numInstances == offsetof(PERF_OBJECT_TYPE, NumInstances));
static_assert(PrPerfLayout::Object::size == sizeof(PERF_OBJECT_TYPE));
static_assert(PrPerfLayout::Counter::byteLength == offsetof(PERF_COUNTER_DEFINITION, ByteLength));
static_assert(PrPerfLayout::Counter::nameTitleIndex == offsetof(PERF_COUNTER_DEFINITION, CounterNameTitleIndex));
static_assert(PrPerfLayout::Counter::type == offsetof(PERF_COUNTER_DEFINITION, CounterType));
static_assert(PrPerfLayout::Counter::offset == offsetof(PERF_COUNTER_DEFINITION, CounterOffset));
static_assert(PrPerfLayout::Counter::size == sizeof(PERF_COUNTER_DEFINITION));
static_assert(PrPerfLayout::Instance::byteLength == offsetof(PERF_INSTANCE_DEFINITION, ByteLength));
static_assert(PrPerfLayout::Instance::nameOffset == offsetof(PERF_INSTANCE_DEFINITION, NameOffset));
static_assert(PrPerfLayout::Instance::size == sizeof(PERF_INSTANCE_DEFINITION));
static_assert(PrPerfLayout::CounterBlock::byteLength == offsetof(PERF_COUNTER_BLOCK, ByteLength));

/// Closes the key, which the query has opened by itself. Until then the libraries that supply the data stay loaded.
struct KeyCloser
{
    ~KeyCloser() { ::RegCloseKey(HKEY_PERFORMANCE_DATA); }
};
}  // namespace

std::uint64_t PrPerfCounter::getValue(unsigned int objectIndex, unsigned int counterIndex, char const* instanceName)
{
    const KeyCloser closer;
    char name[20];  // "%d": from 2^31 on a negative number, which the system knows no object for
    std::snprintf(name, sizeof name, "%d", static_cast<int>(objectIndex));
    const PrPerfBuffer buffer = fetchPerfData([&name](char* bytes, std::uint32_t size) {
        DWORD filled = size;
        return ::RegQueryValueExA(HKEY_PERFORMANCE_DATA, name, nullptr, nullptr, reinterpret_cast<BYTE*>(bytes),
                                  &filled);
    });
    return PrPerfData(buffer.bytes.get(), buffer.size).getValue(objectIndex, counterIndex, instanceName);
}

}  // namespace Vn
