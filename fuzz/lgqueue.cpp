// Calls of a queue and its stream in any order, beside a plain list of what must come out. As long as there is room for all,
// every message comes out as it was written; from the first loss on, each is whole, a "#" or told as lost, and in its order.
#include <base/lgqueue.h>
#include <base/lgtext.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <string>

namespace
{
void check(bool condition)
{
    if (!condition)
        std::abort();
}

struct Message
{
    Vn::LgTypes::Level level;
    std::string text;
};

/// The bytes of the input, one after the other; zeros behind them.
class Bytes
{
public:
    Bytes(std::uint8_t const* data, std::size_t size) : _data(data), _size(size) {}

    bool areLeft() const { return _at < _size; }
    unsigned take() { return areLeft() ? _data[_at++] : 0; }

private:
    std::uint8_t const* _data;
    std::size_t _size;
    std::size_t _at = 0;
};

class Run
{
public:
    explicit Run(Bytes& bytes) : _bytes(bytes) {}

    void run()
    {
        while (_bytes.areLeft()) {
            const unsigned step = _bytes.take();
            if (step < 0xC0)
                write(step);
            else
                for (unsigned i = 0; i <= step - 0xC0U && !_queue.isEmpty(); ++i)
                    read();
        }
        while (!_queue.isEmpty())
            read();
        check(_hasLost || _expected.empty());
    }

private:
    void write(unsigned step)
    {
        const auto level = static_cast<Vn::LgTypes::Level>(step % 7);
        const bool wasFull = _queue.isFull();
        const bool isReserved = _queue.reserveEntry(level);
        check(!isReserved || !wasFull);
        if (!isReserved) {
            _hasLost = true;
            return;
        }
        Vn::LgStream& stream = _queue.getStream();
        std::string text;
        const bool isWhole = _bytes.take() % 2 == 0;
        if (isWhole) {
            // One text, from which its number can be told.
            text = std::to_string(_number) +
                   std::string(step % 8 == 7 ? _bytes.take() * 128 : _bytes.take() % 64, '.');
            writeText(text);
        } else
            for (unsigned pieces = 1 + step % 5; pieces > 0; --pieces)
                text += writePiece();
        if (_bytes.take() % 8 != 0)
            stream << Vn::ends;
        _queue.addEntry();
        if (!_hasLost)
            _expected.push_back({level, text});
        ++_number;
    }

    void writeText(std::string const& text)
    {
        // The zero behind it, and the one cell that tells a full ring from an empty one.
        if (_queue.getStream().getNumCharacters() < text.size() + 2)
            _hasLost = true;
        _queue.getStream() << text.c_str();
    }

    std::string writePiece()
    {
        Vn::LgStream& stream = _queue.getStream();
        if (stream.getNumCharacters() < 400)
            _hasLost = true;
        char text[400];
        const auto number = static_cast<std::int32_t>(_bytes.take() << 24 | _bytes.take() << 12 | _bytes.take());
        switch (_bytes.take() % 8) {
        case 0:
            stream << number;
            std::snprintf(text, sizeof text, "%d", number);
            break;
        case 1:
            stream << static_cast<unsigned long>(number);
            std::snprintf(text, sizeof text, "%lu", static_cast<unsigned long>(number));
            break;
        case 2:
            stream << number / 7.0;
            std::snprintf(text, sizeof text, "%f", number / 7.0);
            break;
        case 3:
            stream << static_cast<float>(number);
            std::snprintf(text, sizeof text, "%f", static_cast<double>(static_cast<float>(number)));
            break;
        case 4:
            stream << (number % 2 == 0);
            return number % 2 == 0 ? "true" : "false";
        case 5:
            stream << static_cast<short>(number);
            std::snprintf(text, sizeof text, "%d", static_cast<short>(number));
            break;
        case 6:
            stream << static_cast<void const*>(&_number);
            std::snprintf(text, sizeof text, "%p", static_cast<void const*>(&_number));
            break;
        default:
            stream << 'c' << "piece";
            return "cpiece";
        }
        return text;
    }

    void read()
    {
        Vn::LgQueue::Entry const& entry = _queue.readEntry();
        if (entry.isOverflowEntry()) {
            check(_hasLost && entry.getOverflowCount() > 0);
            _queue.removeEntry();
            return;
        }
        const std::uint32_t size = _queue.getStream().getNextSize();
        check(size < 32768);
        const std::unique_ptr<char[]> text(new char[size + 1]);  // exactly as much as is promised to do
        _queue.getStream() >> text.get();
        check(std::strlen(text.get()) == size);
        const Vn::LgTypes::Level level = entry.getLevel();
        _queue.removeEntry();
        if (_expected.empty()) {
            check(_hasLost);
            return;
        }
        // What was written before the first loss comes out as it was.
        check(_expected.front().text == text.get() && _expected.front().level == level);
        _expected.pop_front();
    }

    Bytes& _bytes;
    Vn::LgQueue _queue;
    std::deque<Message> _expected;
    unsigned _number = 1;
    bool _hasLost = false;
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Bytes bytes(data, size);
    Run(bytes).run();
    return 0;
}
