// Performance data of any bytes: a value or one of the stated exceptions, and nothing is read outside the block.
#include <base/exinternalerror.h>
#include <base/prperfdata_p.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // The numbers asked for and the name come first.
    if (size < 12)
        return 0;
    std::uint32_t object, counter;
    char name[4];
    std::memcpy(&object, data, 4);
    std::memcpy(&counter, data + 4, 4);
    std::memcpy(name, data + 8, 4);
    name[3] = '\0';
    const std::size_t length = size - 12;
    const std::unique_ptr<char[]> bytes(new char[length]);
    std::memcpy(bytes.get(), data + 12, length);
    try {
        Vn::PrPerfData(bytes.get(), length).getValue(object, counter, name);
    } catch (Vn::PrEx const&) {
    } catch (Vn::ExInternalError const&) {
    }
    return 0;
}
