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
void queueText(LgQueue& queue, char const* text)
{
    if (!queue.reserveEntry(LgTypes::Tracing))
        return;
    queue.getStream() << text << ends;
    queue.addEntry();
}

void printInPieces(char const* text, std::size_t length)
{
    const std::size_t most = LgStream::getMaxSize() - 1;
    for (std::size_t done = 0; done < length; done += most)
        LgTrace::print(std::string(text + done, std::min(most, length - done)).c_str());
}
}  // namespace

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
    const std::size_t length = std::strlen(text);
    if (length + 1 > LgStream::getMaxSize()) {
        printInPieces(text, length);
        return;
    }
    queue.waitForSpace(static_cast<int>(length + 1));
    queueText(queue, text);
}

}  // namespace Vn
