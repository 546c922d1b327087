// ininitmgrwindows.cpp (Linux form: ininitmgrposix.cpp)
#include <base/ininitmgr_p.h>

#include <windows.h>

#include <cwchar>
#include <memory>

namespace Vn::System
{
namespace
{
/// Returns the block to the system.
struct FreeEnvironment
{
    void operator()(wchar_t* block) const { ::FreeEnvironmentStringsW(block); }
};

/// Converts as the C library does for getenv(), so that both give the same bytes. Once for the length, once for the
/// text.
std::string toAnsi(wchar_t const* text, std::size_t length)
{
    const int wide = static_cast<int>(length);
    std::string narrow(
        static_cast<std::size_t>(::WideCharToMultiByte(CP_ACP, 0, text, wide, nullptr, 0, nullptr, nullptr)), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, text, wide, narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr);
    return narrow;
}
}  // namespace

/// Walks the block without the system's help, so a test can hand in a block of its own.
std::vector<std::string> entriesOf(wchar_t const* block)
{
    std::vector<std::string> entries;
    for (std::size_t length; (length = std::wcslen(block)) != 0; block += length + 1)
        entries.push_back(toAnsi(block, length));
    return entries;
}

// The wide form of the call: the narrow one would give bytes of the console's code page and not of the process's.
std::vector<std::string> getEnvironmentEntries()
{
    const std::unique_ptr<wchar_t, FreeEnvironment> block(::GetEnvironmentStringsW());
    return block ? entriesOf(block.get()) : std::vector<std::string>();
}

}  // namespace Vn::System
