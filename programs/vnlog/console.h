#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vnlog
{

/// Standard output in large pieces, byte by byte as it is given also on Windows.
///
/// A failure throws std::runtime_error, from put(), flush() or close(). Create one at a time.
class Output
{
public:
    Output();
    ~Output();  ///< drops what close() has not written
    Output(Output const&) = delete;
    Output& operator=(Output const&) = delete;

    void put(std::string_view text)
    {
        _buffer += text;
        if (_buffer.size() >= blockSize)
            flush();
    }
    void flush();

    /// Starts a pager and writes to it from then on; false if there is none to start.
    bool startPager();

    /// Writes everything and waits for the pager.
    void close();

    /// Whether a pager was left before it had read everything; nothing is written any more.
    bool isLeft() const { return _isLeft; }

private:
    static constexpr std::size_t blockSize = 64 * 1024;

    std::string _buffer;
    bool _hasPager = false;
    bool _isLeft = false;
};

/// Writes a text as a terminal may get it: control characters but the tab stand as text.
void putShown(std::string& target, std::string_view text);

/// Whether colours are wanted where the terminal decides: it is one, and the variables NO_COLOR and TERM have no objection.
bool hasColours();

/// @{
/// In consoleposix.cpp and consolewindows.cpp.
bool isInputTerminal();
bool isUtf8();     ///< whether a terminal would show UTF-8, by the locale or the code page
void setBinary();  ///< standard output takes bytes as they are
bool writeOutput(std::string_view text,
                 bool& isLeft);  ///< to descriptor 1; false with the system's reason kept for getReason()
std::string getReason();
bool openPager(std::string const& command);  ///< descriptor 1 becomes its input
void awaitPager();
extern const bool hasPagers;
extern char const* const usualPager;
/// @}

}  // namespace vnlog
