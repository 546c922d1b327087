// Private to prperfcounterwindows.cpp.
#pragma once

#include <base/exinternalerror.h>
#include <base/prex.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace Vn
{

/// Offsets and sizes, in bytes, of the records in the system's performance data, as the system publishes them. On
/// Windows each is compared with the system's own header at compile time.
struct PrPerfLayout
{
    /// At the start; the objects follow behind `headerLength` bytes.
    struct DataBlock
    {
        static constexpr unsigned totalByteLength = 20, headerLength = 24, size = 88;
    };
    /// An object such as "processor": counter definitions behind its header, instances or values behind the
    /// definitions.
    struct Object
    {
        static constexpr unsigned totalByteLength = 0, definitionLength = 4, headerLength = 8, nameTitleIndex = 12,
                                  numInstances = 40, size = 64;
    };
    /// What a counter is called, its type, and where its value is in a counter block.
    struct Counter
    {
        static constexpr unsigned byteLength = 0, nameTitleIndex = 4, type = 28, offset = 36, size = 40;
    };
    /// One of several of a kind, such as the first processor. Its counter block follows.
    struct Instance
    {
        static constexpr unsigned byteLength = 0, nameOffset = 16, size = 24;
    };
    /// The values of all counters of an object or instance.
    struct CounterBlock
    {
        static constexpr unsigned byteLength = 0, size = 4;
    };
};

/// Reads a block of performance data, trusting none of its numbers. Libraries of other makers fill it, so whatever
/// its records say of their lengths, nothing outside the block is read and each walk ends. An incomplete record
/// counts as none.
///
///     PrPerfData(bytes, size).getValue(238, 6, "_");
///
/// Tests: tests/base/prperfcountertest.cpp.
class PrPerfData
{
public:
    PrPerfData(void const* bytes, std::uint64_t size) : _bytes(static_cast<char const*>(bytes)), _size(size) {}

    /// The value of a counter; throws what PrPerfCounter::getValue() throws.
    ///
    ///     object without instances    ->  the counter block is behind the definitions
    ///     object with instances       ->  it is behind the instance of that name
    ///
    std::uint64_t getValue(unsigned int objectIndex, unsigned int counterIndex, char const* instanceName) const
    {
        const std::uint64_t object = findObject(objectIndex);
        const std::uint64_t definitionEnd = object + at32(object + PrPerfLayout::Object::definitionLength);
        const auto instances = static_cast<std::int32_t>(at32(object + PrPerfLayout::Object::numInstances));
        return readCounter(counterIndex, object,
                           instances < 1 ? definitionEnd : findInstance(object, definitionEnd, instanceName));
    }

private:
    static constexpr char sourceName[] = "src/base/prperfcounterwindows";

    /// Whether the block contains `size` bytes from `offset` on. Written so that no sum can wrap.
    bool holds(std::uint64_t offset, std::uint64_t size) const { return size <= _size && offset <= _size - size; }

    /// 0 past the end of the block. No record starts at 0, and a length of 0 ends a walk.
    std::uint32_t at32(std::uint64_t offset) const { return read<std::uint32_t>(offset); }

    /// A number at any alignment.
    template <class T>
    T read(std::uint64_t offset) const
    {
        T value = 0;
        if (holds(offset, sizeof value))
            std::memcpy(&value, _bytes + offset, sizeof value);
        return value;
    }

    /// Offset of the object of that number.
    std::uint64_t findObject(unsigned int index) const
    {
        const std::uint64_t end = at32(PrPerfLayout::DataBlock::totalByteLength);
        // Lengths are relative to the start of their record; a length of 0 would repeat the same record for ever.
        std::uint64_t object = at32(PrPerfLayout::DataBlock::headerLength);
        while (object < end && holds(object, PrPerfLayout::Object::size)) {
            if (at32(object + PrPerfLayout::Object::nameTitleIndex) == index)
                return object;
            const std::uint32_t length = at32(object + PrPerfLayout::Object::totalByteLength);
            if (length == 0)
                break;
            object += length;
        }
        throw PrEx::ExBadCounterObjectIndex(sourceName, __LINE__, index);
    }

    /// The counter block behind the instance of that name; the first one counts if several have it. An instance and
    /// its block both tell their length, so only two lengths of 0 together would repeat the walk.
    std::uint64_t findInstance(std::uint64_t object, std::uint64_t instance, char const* name) const
    {
        const std::string_view wanted = name != nullptr ? name : "";
        const std::uint64_t end = object + at32(object + PrPerfLayout::Object::totalByteLength);
        while (instance < end && holds(instance, PrPerfLayout::Instance::size)) {
            const std::uint64_t block = instance + at32(instance + PrPerfLayout::Instance::byteLength);
            if (textAt(instance + at32(instance + PrPerfLayout::Instance::nameOffset)) == wanted)
                return block;
            const std::uint64_t next = block + at32(block + PrPerfLayout::CounterBlock::byteLength);
            if (next == instance)
                break;
            instance = next;
        }
        throw PrEx::ExBadCounterInstance(sourceName, __LINE__, name);
    }

    /// The text at `offset`, up to its terminator or the end of the block; empty past the end.
    // Intended: the comparison is that of narrow texts. A name in wide characters ends at its first zero byte, so
    // "_Total" is found as "_". Do not mend: callers pass what is found that way.
    std::string_view textAt(std::uint64_t offset) const
    {
        if (offset >= _size)
            return {};
        return {_bytes + offset, ::strnlen(_bytes + offset, _size - offset)};
    }

    /// Reads the counter from `block`; bits 8 and 9 of its type are the size class.
    std::uint64_t readCounter(unsigned int counterIndex, std::uint64_t object, std::uint64_t block) const
    {
        const std::uint64_t counter = findCounter(counterIndex, object);
        const std::uint64_t place = block + at32(counter + PrPerfLayout::Counter::offset);
        switch (at32(counter + PrPerfLayout::Counter::type) & 0x300) {
        case 0x000:
            requirePlace(place, sizeof(std::uint32_t), counterIndex);
            return at32(place);
        case 0x100:
            requirePlace(place, sizeof(std::uint64_t), counterIndex);
            return read<std::uint64_t>(place);
        case 0x300:
            throw PrEx::ExUnsupported(sourceName, __LINE__);
        default:
            throw ExInternalError(sourceName, __LINE__, "A counter has a size that doesn't exist.");
        }
    }

    /// Offset of the definition of that number among those of the object.
    std::uint64_t findCounter(unsigned int index, std::uint64_t object) const
    {
        const std::uint64_t end = object + at32(object + PrPerfLayout::Object::definitionLength);
        std::uint64_t counter = object + at32(object + PrPerfLayout::Object::headerLength);
        while (counter < end && holds(counter, PrPerfLayout::Counter::size)) {
            if (at32(counter + PrPerfLayout::Counter::nameTitleIndex) == index)
                return counter;
            const std::uint32_t length = at32(counter + PrPerfLayout::Counter::byteLength);
            if (length == 0)
                break;
            counter += length;
        }
        throw PrEx::ExBadCounterIndex(sourceName, __LINE__, index);
    }

    /// A value outside the block is none of the object's counters.
    void requirePlace(std::uint64_t place, std::uint64_t size, unsigned int counterIndex) const
    {
        if (!holds(place, size))
            throw PrEx::ExBadCounterIndex(sourceName, __LINE__, counterIndex);
    }

    char const* _bytes;
    std::uint64_t _size;
};

/// A buffer that a query has filled. `size` is the buffer's; how much of it is data, the data itself tells.
struct PrPerfBuffer
{
    std::unique_ptr<char[]> bytes;
    std::uint32_t size = 0;
};

/// Asks `query(bytes, size)` with 8192 bytes, and with 1024 more each time for as long as it answers that there is
/// more data (234). Any other answer ends it; a query that wrote nothing leaves a block without objects. Throws
/// ExInternalError if `limit` bytes don't suffice.
template <class Query>
PrPerfBuffer fetchPerfData(Query const& query, std::uint32_t limit = 16U << 20)
{
    // The size that is needed changes from call to call, as processes come and go; so it is not asked for but tried.
    constexpr std::uint32_t firstSize = 8192, growth = 1024;
    constexpr long moreData = 234;
    for (std::uint32_t size = firstSize; size <= limit; size += growth) {
        PrPerfBuffer buffer{std::unique_ptr<char[]>(new char[size]), size};
        std::memset(buffer.bytes.get(), 0, PrPerfLayout::DataBlock::size);
        if (query(buffer.bytes.get(), size) != moreData)
            return buffer;
    }
    throw ExInternalError("src/base/prperfcounterwindows", __LINE__, "The performance data doesn't end.");
}

}  // namespace Vn
