#include <base/lgstream.h>

#include "expectchild.h"
#include "steps.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <deque>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <vector>

using Vn::LgStream;

namespace
{
constexpr int cells = 32768;

std::string taken(LgStream& stream)
{
    const std::uint32_t size = stream.getNextSize();
    static char text[cells];
    stream >> text;
    EXPECT_EQ(std::strlen(text), size);
    return text;
}

void put(LgStream& stream, std::string const& text)
{
    stream << text.c_str() << Vn::ends;
}

/// Brings reader and writer behind a message whose zero is at `cell`, with nothing left to read.
void moveTo(LgStream& stream, std::uint32_t cell)
{
    put(stream, std::string(cell, 'm'));
    taken(stream);
}

template <class Value>
std::string shown(Value value)
{
    LgStream stream;
    stream << value << Vn::ends;
    return taken(stream);
}

/// What a ring of text must do, reckoned with positions that never wrap.
class Model
{
public:
    /// Characters that fit.
    std::uint32_t getRoom() const
    {
        const std::uint64_t used = _write - _read;
        return isFull() ? 0 : static_cast<std::uint32_t>(cells - 1 - used - (_isPending ? 1 : 0));
    }

    bool isFull() const
    {
        const std::uint64_t used = _write - _read;
        return used == cells - 1 || (_isPending && used == cells - 2);
    }

    void write(std::string const& text, bool isCharacter)
    {
        if (isFull()) {
            hasOverflowed = true;
            return;
        }
        if (_isPending)
            ++_write;
        _isPending = false;
        if (!isCharacter && text.size() > getRoom()) {
            hasOverflowed = true;
            append("#");
        } else
            append(text);
    }

    void complete()
    {
        _messages.push_back({_open, _write});
        _open.clear();
        _isPending = _write + 1 - _read == cells;
        if (!_isPending)
            ++_write;
    }

    std::string take()
    {
        const Message message = _messages.front();
        _messages.pop_front();
        _read = message.end;
        hasOverflowed = false;
        return message.text;
    }

    bool isEmpty() const { return _messages.empty(); }
    std::string const& getOpenText() const { return _open; }

    bool hasOverflowed = false;

private:
    struct Message
    {
        std::string text;
        std::uint64_t end;  ///< its zero
    };

    void append(std::string const& text)
    {
        _open += text;
        _write += text.size();
    }

    std::uint64_t _read = 0, _write = 0;
    bool _isPending = false;
    std::string _open;
    std::deque<Message> _messages;
};
}  // namespace

TEST(LgStream, writesEachTypeAsItsFormatSays)
{
    EXPECT_EQ(shown('c'), "c");
    EXPECT_EQ(shown(static_cast<signed char>('s')), "s");
    EXPECT_EQ(shown(static_cast<unsigned char>(0xE9)), "\xE9");
    EXPECT_EQ(shown("text"), "text");
    char changing[] = "changing";
    EXPECT_EQ(shown(static_cast<char*>(changing)), "changing");
    EXPECT_EQ(shown(static_cast<char const*>(nullptr)), "");
    EXPECT_EQ(shown(true), "true");
    EXPECT_EQ(shown(false), "false");
    EXPECT_EQ(shown(short(-32768)), "-32768");
    EXPECT_EQ(shown(static_cast<unsigned short>(65535)), "65535");
    EXPECT_EQ(shown(-2147483647 - 1), "-2147483648");
    EXPECT_EQ(shown(4294967295u), "4294967295");
    EXPECT_EQ(shown(-5L), "-5");
    EXPECT_EQ(shown(5UL), "5");
    EXPECT_EQ(shown(2.5f), "2.500000");
    EXPECT_EQ(shown(-0.1), "-0.100000");
    EXPECT_EQ(shown(1.25L), "1.250000");
    int object = 0;
    char address[32];
    std::snprintf(address, sizeof address, "%p", static_cast<void*>(&object));
    EXPECT_EQ(shown(static_cast<void*>(&object)), address);
    EXPECT_EQ(shown(static_cast<void const*>(&object)), address);
    EXPECT_EQ(shown(&object), address);
}

TEST(LgStream, longestNumbersFit)
{
    EXPECT_EQ(shown(-1.7976931348623157e308).size(), 317u);
    EXPECT_EQ(shown(std::numeric_limits<long double>::max()).size(),
              static_cast<std::size_t>(std::numeric_limits<long double>::max_exponent10) + 8);
}

VN_CHILD(lgStreamLocale)
{
    char const* found = nullptr;
    for (char const* name :
         {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "German_Germany.1252", "fr_FR.UTF-8", "fr_FR.utf8"})
        if (found == nullptr)
            found = std::setlocale(LC_ALL, name);
    LgStream stream;
    // Each is exact in its type, whose size is the processor's own.
    stream << 1234567.5 << ' ' << 0.25f << ' ' << 1e20L << ' ' << 1234567 << Vn::ends;
    std::printf("%s\n", taken(stream).c_str());
    return 0;
}

// Where the system has no locale with another mark, LgFixedText.anotherLocalesMarkBecomesAPoint is what is left.
TEST(LgStream, numbersAreTheSameUnderEachLocale)
{
    VnTest::expectOutput("lgStreamLocale", "1234567.500000 0.250000 100000000000000000000.000000 1234567\n");
}

TEST(LgStream, isEmptyAtFirst)
{
    LgStream stream;
    EXPECT_EQ(LgStream::getMaxSize(), 32766u);
    EXPECT_EQ(stream.getNumCharacters(), 32767u);
    EXPECT_EQ(stream.getNextSize(), 0u);
    EXPECT_FALSE(stream.isFull());
    EXPECT_FALSE(stream.hasOverflowed());
    EXPECT_EQ(stream.getOutputFlags(), 0u);
    EXPECT_EQ(taken(stream), "");
}

TEST(LgStream, flagsTellOfTextAndOfItsEnd)
{
    LgStream stream;
    stream << "";
    EXPECT_EQ(stream.getOutputFlags(), 0x1u);
    stream.resetOutputFlags();
    EXPECT_EQ(stream.getOutputFlags(), 0u);
    stream.completeString();
    EXPECT_EQ(stream.getOutputFlags(), 0x2u);
    stream << 'c';
    EXPECT_EQ(stream.getOutputFlags(), 0x3u);
}

TEST(LgStream, messagesComeOutInOrderAndWhole)
{
    LgStream stream;
    stream << "first " << 1 << Vn::ends;
    put(stream, "");
    put(stream, "third");
    EXPECT_EQ(taken(stream), "first 1");
    EXPECT_EQ(taken(stream), "");
    EXPECT_EQ(taken(stream), "third");
    EXPECT_EQ(taken(stream), "");
    put(stream, "fourth");
    EXPECT_EQ(taken(stream), "fourth");
}

TEST(LgStream, anUnfinishedStringIsNotThereYet)
{
    LgStream stream;
    stream << "text";
    EXPECT_EQ(stream.getNextSize(), 0u);
    EXPECT_EQ(taken(stream), "");
    stream << Vn::ends;
    EXPECT_EQ(taken(stream), "text");
}

TEST(LgStream, anEmptyFirstTextIsFoundAsIfItWereNothing)
{
    LgStream read;
    put(read, "");
    EXPECT_EQ(taken(read), "");
    put(read, "second");
    EXPECT_EQ(taken(read), "second");

    LgStream unread;  // two strings wait: the reader takes the first zero for the end of one before
    put(unread, "");
    put(unread, "second");
    EXPECT_EQ(taken(unread), "second");
    EXPECT_EQ(taken(unread), "");
}

TEST(LgStream, aTextThatFillsTheRingFits)
{
    LgStream stream;
    const std::string text(32767, 't');
    put(stream, text);
    EXPECT_TRUE(stream.isFull());
    EXPECT_FALSE(stream.hasOverflowed());
    EXPECT_EQ(stream.getNumCharacters(), 0u);
    EXPECT_EQ(stream.getNextSize(), 32767u);
    stream << 'x';  // no room, and no harm to what waits
    EXPECT_TRUE(stream.hasOverflowed());
    EXPECT_EQ(taken(stream), text);
    EXPECT_EQ(stream.getNumCharacters(), 32766u);
    put(stream, "next");
    EXPECT_EQ(taken(stream), "next");
}

TEST(LgStream, aTextThatIsLongerBecomesAMark)
{
    LgStream stream;
    put(stream, std::string(32768, 't'));
    EXPECT_TRUE(stream.hasOverflowed());
    EXPECT_EQ(taken(stream), "#");
    EXPECT_FALSE(stream.hasOverflowed());
    moveTo(stream, 100);
    put(stream, std::string(32767, 't'));  // a ring in use holds one less
    EXPECT_EQ(taken(stream), "#");
    put(stream, std::string(32766, 't'));
    EXPECT_EQ(taken(stream).size(), 32766u);
}

TEST(LgStream, aRefusedTextLeavesAMarkInTheMiddle)
{
    LgStream stream;
    const std::string most(32700, 'm');
    stream << most.c_str() << std::string(68, 'n').c_str();
    EXPECT_EQ(stream.getNumCharacters(), 66u);
    stream << "end" << Vn::ends;
    EXPECT_EQ(taken(stream), most + "#end");
}

TEST(LgStream, aFullRingLosesPiecesWithoutAMark)
{
    LgStream stream;
    stream << std::string(32767, 't').c_str();
    stream.resetOutputFlags();
    stream << "lost" << 'x' << "";
    EXPECT_EQ(stream.getOutputFlags(), 0x2u);
    EXPECT_TRUE(stream.hasOverflowed());
    stream << Vn::ends;
    EXPECT_EQ(taken(stream), std::string(32767, 't'));
}

TEST(LgStream, aSingleFreeCellTakesAMark)
{
    LgStream stream;
    stream << std::string(32766, 't').c_str();
    EXPECT_EQ(stream.getNumCharacters(), 1u);
    EXPECT_FALSE(stream.isFull());
    stream << "xx"
           << "y";
    EXPECT_EQ(stream.getNumCharacters(), 0u);
    stream << Vn::ends;
    EXPECT_EQ(taken(stream), std::string(32766, 't') + "#");
}

/// A ring that is full with an advance pending; the reader can free one cell, two or three at its oldest messages.
TEST(LgStream, aPendingAdvanceNeedsTwoFreeCells)
{
    LgStream stream;
    moveTo(stream, 500);
    put(stream, "");  // its zero is cell 501; taking it frees one cell
    put(stream, "");  // and this one the next
    put(stream, "");
    const std::string rest(32763, 'r');
    put(stream, rest);
    ASSERT_TRUE(stream.isFull());
    EXPECT_EQ(stream.getNumCharacters(), 0u);
    EXPECT_EQ(taken(stream), "");
    EXPECT_TRUE(stream.isFull()) << "one cell is not enough";
    EXPECT_EQ(stream.getNumCharacters(), 0u);
    stream << 'l' << "lost";
    EXPECT_TRUE(stream.hasOverflowed());
    EXPECT_EQ(taken(stream), "");
    EXPECT_FALSE(stream.isFull());
    EXPECT_EQ(stream.getNumCharacters(), 1u);
    stream << "##" << Vn::ends;  // a mark, and its zero in the last cell
    EXPECT_TRUE(stream.isFull());
    EXPECT_EQ(taken(stream), "");
    EXPECT_EQ(taken(stream), rest);
    EXPECT_EQ(taken(stream), "#");
    EXPECT_EQ(stream.getNumCharacters(), 32766u);
}

TEST(LgStream, completingAgainStepsOverAPendingZero)
{
    LgStream stream;
    moveTo(stream, 500);
    put(stream, "");
    put(stream, "");
    const std::string rest(32764, 'r');
    put(stream, rest);
    ASSERT_TRUE(stream.isFull());
    stream << Vn::ends;  // still no room to step
    EXPECT_TRUE(stream.isFull());
    EXPECT_EQ(taken(stream), "");
    stream << Vn::ends;  // steps: the ring is full now without a pending advance
    EXPECT_TRUE(stream.isFull());
    EXPECT_EQ(taken(stream), "");
    EXPECT_EQ(stream.getNumCharacters(), 1u);
    stream << 'x' << Vn::ends;
    EXPECT_EQ(taken(stream), rest);
    EXPECT_EQ(taken(stream), "x");
}

TEST(LgStream, wrapsAtEachStart)
{
    LgStream stream;
    const std::string full(32766, 'f'), tooLong(32767, 't');
    moveTo(stream, 0x1234);
    for (int start = 0; start < VnTest::steps(cells); ++start) {
        // 32,767 cells, then 6 and 4: the next start lies nine cells on.
        put(stream, full);
        ASSERT_TRUE(stream.isFull()) << start;
        ASSERT_EQ(taken(stream), full) << start;
        stream << 12345 << Vn::ends << "ab" << 'c' << Vn::ends;
        ASSERT_EQ(taken(stream), "12345") << start;
        ASSERT_EQ(taken(stream), "abc") << start;
    }
}

namespace
{
/// Writes a number in front of the ring's end, at each distance from it, and into each little room.
template <class Value>
void expectNumberAnywhere(Value value)
{
    const std::string whole = shown(value);
    for (std::uint32_t distance = 1; distance < 45; ++distance) {
        SCOPED_TRACE(whole + ", from the end " + std::to_string(distance));
        LgStream stream;
        moveTo(stream, cells - distance);
        stream << value << Vn::ends << 'x' << Vn::ends;
        EXPECT_EQ(taken(stream), whole);
        EXPECT_EQ(taken(stream), "x");
    }
    for (std::uint32_t room = 0; room < 45; ++room) {
        SCOPED_TRACE(whole + ", room " + std::to_string(room));
        LgStream stream;
        moveTo(stream, 5);
        const std::string before(stream.getNumCharacters() - room, 'b');
        stream << before.c_str() << value;
        EXPECT_EQ(stream.hasOverflowed(), whole.size() > room);
        const std::string text = whole.size() <= room ? whole : room > 0 ? "#" : "";
        EXPECT_EQ(stream.getNumCharacters(), room - text.size());
        stream << Vn::ends;
        EXPECT_TRUE(taken(stream) == before + text);
    }
}
}  // namespace

TEST(LgStream, aNumberIsWrittenWholeOrRefusedWhereverItBegins)
{
    expectNumberAnywhere(0);
    expectNumberAnywhere(-2147483647 - 1);
    expectNumberAnywhere(4294967295u);
    expectNumberAnywhere(short(-32768));
    expectNumberAnywhere(std::numeric_limits<long>::min());
    expectNumberAnywhere(0.37);
    expectNumberAnywhere(-18446744073709549568.0);  // 28 characters: the longest that goes straight into the ring
    expectNumberAnywhere(18446744073709551616.0);
    expectNumberAnywhere(1e30);
    expectNumberAnywhere(-0.5L);
}

TEST(LgStream, doesWhatAPlainModelDoesOverMillionsOfSteps)
{
    LgStream stream;
    Model model;
    moveTo(stream, 0);  // no empty first text
    std::mt19937 random(31);
    const auto below = [&random](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    // The model begins where the ring is now: nothing waits, the reader on the last zero.
    model.complete();
    model.take();
    std::uint32_t readChance = 50;
    for (int step = 0; step < VnTest::steps(3000000); ++step) {
        if (step % 4096 == 0)
            readChance = 2 + below(60);  // of 100: sometimes the ring is nearly always full
        if (below(100) < readChance) {
            if (model.isEmpty())
                ASSERT_EQ(taken(stream), "");
            else
                ASSERT_EQ(taken(stream), model.take()) << step;
        } else if (below(3) == 0) {
            // An empty string isn't told from a step over a pending zero: the model writes something first.
            if (!model.getOpenText().empty()) {
                stream << Vn::ends;
                model.complete();
            }
        } else if (below(4) == 0) {
            const char character = static_cast<char>('a' + below(26));
            stream << character;
            model.write(std::string(1, character), true);
        } else {
            const std::uint32_t length = below(20) == 0 ? below(9000) : below(40);
            const std::string text(length, static_cast<char>('A' + below(26)));
            stream << text.c_str();
            model.write(text, false);
        }
        ASSERT_EQ(stream.getNumCharacters(), model.getRoom()) << step;
        ASSERT_EQ(stream.isFull(), model.isFull()) << step;
        ASSERT_EQ(stream.hasOverflowed(), model.hasOverflowed) << step;
    }
}

TEST(LgStream, oneThreadWritesAndAnotherOneReads)
{
    LgStream stream;
    constexpr int messages = VnTest::steps(20000);
    std::thread writer([&stream] {
        for (int i = 1; i <= messages; ++i) {
            const std::string text = std::to_string(i) + std::string(static_cast<std::size_t>(i) * 37 % 3000, '.');
            while (stream.getNumCharacters() < text.size())
                std::this_thread::yield();
            put(stream, text);
        }
    });
    std::vector<char> text(cells);
    for (int i = 1; i <= messages; ++i) {
        do
            stream >> text.data();
        while (text[0] == '\0');  // no text is empty
        ASSERT_EQ(std::string(text.data()),
                  std::to_string(i) + std::string(static_cast<std::size_t>(i) * 37 % 3000, '.'));
    }
    writer.join();
    EXPECT_FALSE(stream.hasOverflowed());
}

TEST(LgStream, aCopySharesTheRing)
{
    LgStream stream;
    stream << "shared" << Vn::ends;
    alignas(LgStream) unsigned char memory[sizeof(LgStream)];
    LgStream* const copy = new (memory) LgStream(stream);  // never destroyed
    EXPECT_EQ(taken(*copy), "shared");
    *copy = stream;
    EXPECT_EQ(taken(*copy), "shared");
}
