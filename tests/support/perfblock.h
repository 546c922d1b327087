#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace VnTest
{

/// Bytes of performance data, put together from the published layout of the records on 64-bit systems.
class PerfBytes
{
public:
    PerfBytes& number(std::uint32_t value) { return raw(&value, sizeof value); }
    PerfBytes& wide(std::uint64_t value) { return raw(&value, sizeof value); }
    PerfBytes& zeros(std::size_t count)
    {
        _bytes.append(count, '\0');
        return *this;
    }
    PerfBytes& text(std::string const& bytes)
    {
        _bytes += bytes;
        return *this;
    }
    PerfBytes& raw(void const* bytes, std::size_t size)
    {
        _bytes.append(static_cast<char const*>(bytes), size);
        return *this;
    }

    std::string const& get() const { return _bytes; }
    std::uint32_t size() const { return static_cast<std::uint32_t>(_bytes.size()); }

private:
    std::string _bytes;
};

inline std::string perfCounter(std::uint32_t index, std::uint32_t type, std::uint32_t offset)
{
    return PerfBytes().number(40).number(index).zeros(20).number(type).number(0).number(offset).get();
}

/// A counter block of the values given, 8 bytes each, behind its length.
inline std::string perfValues(std::vector<std::uint64_t> const& values)
{
    PerfBytes block;
    block.number(static_cast<std::uint32_t>(8 + 8 * values.size())).number(0);
    for (std::uint64_t value : values)
        block.wide(value);
    return block.get();
}

inline std::string perfInstance(std::string const& name, std::string const& values)
{
    const auto length = static_cast<std::uint32_t>(24 + name.size() + 1);
    PerfBytes instance;
    instance.number(length).zeros(12).number(24).number(static_cast<std::uint32_t>(name.size() + 1));
    return instance.text(name).zeros(1).text(values).get();
}

/// `instances` is -1 or 0 for an object whose one counter block stands in `body`.
inline std::string perfObject(std::uint32_t index, std::vector<std::string> const& counters, std::int32_t instances,
                              std::string const& body)
{
    std::string definitions;
    for (std::string const& counter : counters)
        definitions += counter;
    const auto definitionLength = static_cast<std::uint32_t>(64 + definitions.size());
    PerfBytes object;
    object.number(definitionLength + static_cast<std::uint32_t>(body.size())).number(definitionLength).number(64);
    object.number(index).zeros(16).number(static_cast<std::uint32_t>(counters.size())).number(0);
    object.number(static_cast<std::uint32_t>(instances)).zeros(20);
    return object.text(definitions).text(body).get();
}

inline std::string perfBlock(std::vector<std::string> const& objects)
{
    std::string all;
    for (std::string const& object : objects)
        all += object;
    PerfBytes block;
    block.text(std::string("P\0E\0R\0F\0", 8)).number(1).number(1).number(1);
    block.number(88 + static_cast<std::uint32_t>(all.size())).number(88);
    return block.number(static_cast<std::uint32_t>(objects.size())).zeros(56).text(all).get();
}

/// Puts a number over what is at `offset`.
inline std::string patched(std::string bytes, std::size_t offset, std::uint32_t value)
{
    std::memcpy(bytes.data() + offset, &value, sizeof value);
    return bytes;
}

}  // namespace VnTest
