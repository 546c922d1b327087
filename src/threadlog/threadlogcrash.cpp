// What is left of the log when the process crashes.
//
// The handler first keeps the reader from beginning another line, and waits for the one that it is writing; nearly always that
// is all, and the queues are as between two lines. It then merges them by time, as the reader does, and writes each line in one
// piece straight to its file.
//
// The reader may be unable to finish: the crash is its own, or it waits for a lock of the allocator that the crashed thread
// holds. Its message is then still the head of its queue, but the text may have been taken off the ring, and the line may be in
// the file. Both can be seen. The ring holds as many texts as there are messages, or one less. The line, if it is in the file,
// begins with the time and the thread of the message, which no other line has (on Windows, whose counter moves in steps of 100 ns,
// two messages of a thread may share it; the second then counts as written). A text that is in neither place is lost, and
// that is told by an overflow entry in its place.
//
//     text on the ring   line in the file   what is done
//     yes                -                  nothing: the message is written like all others
//     taken              whole              the entry is removed: the reader was just about to do that
//     taken              begun              the half line is ended, and the overflow entry follows it
//     taken              not there          the overflow entry alone
//
// Without time stamps in the lines there is nothing to recognise one by. It is then taken for written, as it nearly always is:
// between taking the text and writing the line the reader does little.
//
// No function here allocates or throws; what it needs beyond the stack is static, and one thread at a time uses it.
#include <threadlog/threadlogcrash_p.h>

#include <threadlog/threadlogengine_p.h>
#include <threadlog/threadlogsystem_p.h>
#include <threadlog/threadlogwriter_p.h>

#include <base/hwcounter.h>
#include <base/lglog.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>
#include <new>

namespace Vn
{
namespace
{
/// The thread that writes; 0 while there is none.
std::atomic<std::uint64_t> writingThread = 0;

/// The thread that writes already; 0 if `self` does from now on.
std::uint64_t beginWriting(std::uint64_t self)
{
    std::uint64_t other = 0;
    writingThread.compare_exchange_strong(other, self);
    return other;
}

/// One line, on no stack: the one of the crash may be nearly full. Used by one thread, see writeAll().
class Line
{
public:
    void clear() { _size = 0; }

    void putPrefix(LgQueue::Entry const& entry, unsigned long threadId)
    {
        if (!LgLog::isTimeStampsEnabled())
            return;
        const std::uint64_t ticks = entry.getTimeStamp() - LgLog::getStart();
        putPadded(static_cast<std::uint32_t>(ticks >> 32), 10, 10);
        put(" ");
        putPadded(static_cast<std::uint32_t>(ticks), 10, 10);
        put(" (0x");
        putPadded(static_cast<std::uint32_t>(threadId), 16, 8);
        put(") ");
        put(LgTypes::levelToString(levelOf(entry)));
        put(": ");
    }

    void putOverflow(int count)
    {
        put("Event overflow [");
        putPadded(static_cast<std::uint32_t>(count), 10, 1);
        put("]\n");
    }

    /// Takes the text off the ring. There is room for the longest one, see `_text`.
    void putText(LgStream& stream)
    {
        stream >> (_text + _size);
        _size += std::strlen(_text + _size);
        _text[_size++] = '\n';
    }

    void put(char const* text)
    {
        const std::size_t length = std::strlen(text);
        std::memcpy(_text + _size, text, length);
        _size += length;
    }

    std::string_view getText() const { return {_text, _size}; }

    static LgTypes::Level levelOf(LgQueue::Entry const& entry)
    {
        return entry.isOverflowEntry() ? LgTypes::Informational : entry.getLevel();
    }

private:
    /// With zeros in front, up to `width`. std::to_chars allocates nothing and knows no locale, unlike printf().
    void putPadded(std::uint32_t number, int base, std::size_t width)
    {
        char digits[16];
        const auto length =
            static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, number, base).ptr - digits);
        for (std::size_t i = length; i < width; ++i)
            _text[_size++] = '0';
        std::memcpy(_text + _size, digits, length);
        _size += length;
    }

    /// The prefix, the longest text that a ring can hold, a line end and a zero.
    char _text[64 + 32768 + 2];
    std::size_t _size = 0;
};

/// Static for their size: a thread's signal stack has 64 KB.
Line line;
char tail[2 * 65536];
alignas(LgStream) unsigned char streamCopy[sizeof(LgStream)];

/// To the level's file and, if it is echoed, to standard output, like the reader. What the system refuses is lost: there is no later
/// time to try again.
void writeLine(LgTypes::Level level)
{
    ThreadLogEngine::get().getOutputs().append(level, line.getText());
    if (LgLog::isLevelEchoed(level))
        ThreadLogOutputs::appendToStandardOutput(line.getText());
}

/// Whether a line that begins with `prefix` is among the last ones of the level's file. A file that ends within a line counts as
/// partly: the line may have ended within its prefix, and whosever it is, the next one must not follow it there.
enum class Found
{
    Nowhere,
    Whole,
    Partly
};

Found findLine(LgTypes::Level level, std::string_view prefix)
{
    const std::size_t size = ThreadLogEngine::get().getOutputs().readTail(level, tail, sizeof tail);
    const std::string_view text(tail, size);
    for (std::size_t place = text.find(prefix); place != text.npos; place = text.find(prefix, place + 1))
        if (place == 0 || text[place - 1] == '\n')
            return text.find('\n', place) != text.npos ? Found::Whole : Found::Partly;
    return text.empty() || text.ends_with('\n') ? Found::Nowhere : Found::Partly;
}

/// The head with the smallest time of those that were considered.
struct Earliest
{
    LgQueue* queue = nullptr;
    ThreadLogWriter* writer = nullptr;
    std::uint64_t timeStamp = 0;

    void consider(ThreadLogWriter& owner, LgQueue& candidate)
    {
        if (candidate.isEmpty())
            return;
        const std::uint64_t time = candidate.readEntry().getTimeStamp();
        if (queue != nullptr && time >= timeStamp)
            return;
        queue = &candidate;
        writer = &owner;
        timeStamp = time;
    }
};
}  // namespace

/// One thread writes; a second one that crashes waits, as going its way would end the process under the first. It then writes
/// what it has logged meanwhile.
// model: tests/models/hold.pml.
bool ThreadLogCrash::writeAll() noexcept
{
    ThreadLogEngine& engine = ThreadLogEngine::get();
    if (!engine.isRunning() || !engine.isOwner())
        return false;
    const std::uint64_t self = ThreadLogSystem::getThread();
    while (const std::uint64_t other = beginWriting(self)) {
        if (other == self)  // this crash is our own
            return false;
        if (!ThreadLogSystem::waitBriefly([] { return writingThread.load() == 0; }))
            return false;
    }
    writeQueues(!engine.holdReader());
    writingThread.store(0);
    return true;
}

/// Called apart from writeAll(), since on Windows the reader stays at rest behind a crash.
void ThreadLogCrash::resume() noexcept
{
    ThreadLogEngine::get().releaseReader();
}

/// What comes while this runs isn't waited for: a thread that logs without end would keep the process from its end.
void ThreadLogCrash::writeQueues(bool isLineOpen)
{
    const std::uint64_t now = HwCounter::timeStamp();
    if (isLineOpen)
        ThreadLogWriters::forEach(skipOpenLine);
    for (;;) {
        Earliest earliest;
        ThreadLogWriters::forEach([&earliest](ThreadLogWriter& writer) {
            earliest.consider(writer, writer.getQueue());
            if (LgQueue* const waiting = writer.getWaiting())
                earliest.consider(writer, *waiting);
        });
        if (earliest.queue == nullptr || earliest.timeStamp > now)
            return;
        LgQueue& own = earliest.writer->getQueue();
        if (earliest.queue == &own)
            writeHead(own);
        else if (earliest.writer->takeWaiting()) {
            // Its thread may have moved the message since, and the next one waits now, behind those in the queue.
            while (!own.isEmpty())
                writeHead(own);
            writeHead(*earliest.queue);
        }
    }
}

/// The line as the reader makes it. The entry goes last, so that a crash in here finds it again; its text is then taken.
void ThreadLogCrash::writeHead(LgQueue& queue)
{
    LgQueue::Entry const& entry = queue.readEntry();
    line.clear();
    line.putPrefix(entry, queue.getThreadId());
    if (entry.isOverflowEntry())
        line.putOverflow(entry.getOverflowCount());
    else
        line.putText(queue.getStream());
    writeLine(Line::levelOf(entry));
    queue.removeEntry();
}

/// How many more texts than messages there are: -1 if the head's text isn't on the ring any more, 0 if it is; more while
/// messages are being added. A copy of the stream reads what the stream will, and leaves it there; it shares the ring, so it is
/// never destroyed.
int ThreadLogCrash::countSpareTexts(ThreadLogWriter& writer)
{
    // In this order: a message that is added meanwhile is then in the copy alone.
    const auto messages = static_cast<int>(writer.countMessages());
    LgStream& copy = *new (streamCopy) LgStream(writer.getQueue().getStream());
    int texts = 0;
    for (copy >> tail; tail[0] != '\0'; copy >> tail)
        ++texts;
    return texts - messages;
}

/// Its thread may go on logging, so the least of some looks counts.
bool ThreadLogCrash::isTextTaken(ThreadLogWriter& writer)
{
    int least = 0;
    for (int looks = 0; looks < 20; ++looks) {
        const std::uint32_t before = writer.getWritten();
        const int spare = countSpareTexts(writer);
        least = std::min(least, spare);
        if (spare <= 0 && writer.getWritten() == before)
            break;
        ThreadLogSystem::pause();
    }
    return least < 0;
}

/// The reader has stopped within this queue's line, or within another one's.
void ThreadLogCrash::skipOpenLine(ThreadLogWriter& writer)
{
    LgQueue& queue = writer.getQueue();
    if (queue.isEmpty())
        return;
    LgQueue::Entry const& entry = queue.readEntry();
    const LgTypes::Level level = Line::levelOf(entry);
    line.clear();
    line.putPrefix(entry, queue.getThreadId());
    const Found found = line.getText().empty() ? Found::Whole : findLine(level, line.getText());
    if (entry.isOverflowEntry()) {
        if (found == Found::Whole && !line.getText().empty())
            queue.removeEntry();
        return;
    }
    if (!isTextTaken(writer))
        return;
    if (found != Found::Whole) {
        if (found == Found::Partly) {
            line.clear();
            line.put("\n");
            writeLine(level);
        }
        line.clear();
        line.putPrefix(entry, queue.getThreadId());
        line.putOverflow(1);
        writeLine(level);
    }
    queue.removeEntry();
}

}  // namespace Vn
