// From a trace text to an event of the level `Tracing`.
//
// Without blocking trace a text takes the way of any message: no room, no message. With it, the writer waits in the
// queue's observer until the whole text has room, and a text longer than the ring is cut into pieces that fit, since
// it would never stop waiting otherwise. A queue without an observer never waits.
#include <base/lgtrace.h>

#include <base/lglog.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <string>

namespace Vn
{
namespace
{
/// The same steps as VN_LOG, without a group: trace levels are switched elsewhere.
void queueText(LgQueue& queue, char const* text)
{
    if (!queue.reserveEntry(LgTypes::Tracing))
        return;
    queue.getStream() << text << ends;
    queue.addEntry();
}

/// Pieces of 32,765 characters, one event each: the length that leaves room for a zero and the one cell that no text
/// may take. Calls print() again for each, since the logger may be switched off in between.
void printInPieces(char const* text, std::size_t length)
{
    const std::size_t most = LgStream::getMaxSize() - 1;
    for (std::size_t done = 0; done < length; done += most)
        LgTrace::print(std::string(text + done, std::min(most, length - done)).c_str());
}
}  // namespace

/// Without the active logger a text goes to standard output, as a log statement's message does.
void LgTrace::print(char const* text)
{
    if (text == nullptr || *text == '\0')
        return;
    if (!LgLog::isLoggerActive()) {
        std::cout << text << std::endl;
        return;
    }
    LgQueue& queue = LgLog::getQueue();
    if (!LgLog::getBlockingTrace()) {
        queueText(queue, text);
        return;
    }
    // Zero included, as the observer counts bytes of the ring.
    const std::size_t length = std::strlen(text);
    if (length + 1 > LgStream::getMaxSize()) {
        printInPieces(text, length);
        return;
    }
    queue.waitForSpace(static_cast<int>(length + 1));
    queueText(queue, text);
}

}  // namespace Vn
