#include <base/duplicatestring.h>
#include <base/hmgc.h>
#include <base/hmgcex.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using Vn::ArrayPtr;
using Vn::HmGC;
using Vn::HmGCEx;

static_assert(!std::is_polymorphic_v<HmGC> && std::is_copy_assignable_v<HmGC>);
template <class T>
concept CanBeDeleted = requires(T* object)
{
    delete object;
};
static_assert(CanBeDeleted<HmGCEx::ExGarbageDetected> && !CanBeDeleted<HmGC>);  // it lives on the stack
static_assert(std::is_base_of_v<Vn::ExBase, HmGCEx::ExGarbageDetected>);
static_assert(!std::is_base_of_v<std::exception, HmGCEx::ExGarbageDetected>);

namespace
{
bool isLeakValid(HmGC const& collector, ArrayPtr<char>* frames, char const* text);

/// The language lets an explicit instantiation name what is private; the function that comes with it carries it out.
template <auto member>
struct Reach
{
    friend bool isLeakValid(HmGC const& collector, ArrayPtr<char>* frames, char const* text)
    {
        return (collector.*member)(frames, text);
    }
};
template struct Reach<&HmGC::isLeakValid>;

/// The filter's answer for a call stack. Text and frames stand in blocks of their exact size, so that the address
/// sanitizer sees any look beyond them.
bool isValid(std::vector<std::string> const& stack, std::string const& text)
{
    const std::unique_ptr<ArrayPtr<char>[]> frames(new ArrayPtr<char>[stack.size() + 1]);
    for (std::size_t i = 0; i < stack.size(); ++i)
        frames[i] = Vn::duplicateString(stack[i].c_str());
    const std::unique_ptr<char[]> exact(new char[text.size() + 1]);
    std::memcpy(exact.get(), text.c_str(), text.size() + 1);
    return isLeakValid(HmGC{}, frames.get(), exact.get());
}
}  // namespace

TEST(HmGC, reportsLeaksThatNoRecordMatches)
{
    const std::vector<std::string> stack = {"alloc", "main"};
    const struct
    {
        char const* what;
        char const* text;
        bool isValid;
    } table[] = {
        {"no text", "", true},
        {"no record", "alloc main ENDL", true},
        {"innermost frame", "KNOWNLEAK alloc ENDL", false},
        {"whole stack", "KNOWNLEAK alloc main ENDL", false},
        {"another frame", "KNOWNLEAK free ENDL", true},
        {"another second frame", "KNOWNLEAK alloc free ENDL", true},
        {"second frame only", "KNOWNLEAK main ENDL", true},
        {"any stack", "KNOWNLEAK ENDL", false},
        {"frame is a prefix of the word", "KNOWNLEAK allocate mainly ENDL", false},
        {"word is a prefix of the frame", "KNOWNLEAK all ENDL", true},
        {"longer than the stack", "KNOWNLEAK alloc main exit ENDL", true},
        {"end mark is four letters", "KNOWNLEAK alloc ENDLESS", false},
        {"second record after the first frame", "KNOWNLEAK free ENDL KNOWNLEAK alloc ENDL", false},
        {"second record after the second", "KNOWNLEAK alloc free ENDL KNOWNLEAK alloc main ENDL", false},
        {"second record after a long one", "KNOWNLEAK alloc main exit ENDL\nKNOWNLEAK alloc ENDL", false},
        {"third record", "KNOWNLEAK a ENDL KNOWNLEAK alloc b ENDL KNOWNLEAK alloc ENDL", false},
        {"none of three", "KNOWNLEAK a ENDL KNOWNLEAK alloc b ENDL KNOWNLEAK free ENDL", true},
        {"words before the record", "of old KNOWNLEAK alloc ENDL", false},
        {"record as a word of a record", "KNOWNLEAK alloc KNOWNLEAK alloc ENDL", false},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(isValid(stack, row.text), row.isValid);
    }
}

TEST(HmGC, malformedRecordsMatchNothing)
{
    const std::vector<std::string> stack = {"alloc", "main"};
    for (char const* text :
         {"KNOWNLEAK", "KNOWNLEAK ", "KNOWNLEAK alloc", "KNOWNLEAK alloc ", "KNOWNLEAK alloc main",
          "KNOWNLEAK alloc main ", "KNOWNLEAK alloc main exit", "KNOWNLEAK  ENDL", "KNOWNLEAKENDL",
          "KNOWNLEAK\nENDL", "KNOWNLEAK alloc\nENDL", "KNOWNLEAK  alloc ENDL", "KNOWNLEAK ENDKNOWNLEAK",
          "KNOWNLEAK alloc END", "KNOWNLEA alloc ENDL", "knownleak alloc ENDL"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(isValid(stack, text));
    }
}

TEST(HmGC, aStackWithoutFramesIsKnownToAnEmptyRecordOnly)
{
    EXPECT_FALSE(isValid({}, "KNOWNLEAK ENDL"));
    EXPECT_TRUE(isValid({}, "KNOWNLEAK alloc ENDL"));
    EXPECT_FALSE(isValid({""}, "KNOWNLEAK alloc ENDL"));  // an empty frame begins any word
    EXPECT_TRUE(isLeakValid(HmGC{}, nullptr, nullptr));
    EXPECT_TRUE(isLeakValid(HmGC{}, nullptr, ""));
    EXPECT_TRUE(isLeakValid(HmGC{}, nullptr, "KNOWNLEAK alloc ENDL"));
    EXPECT_FALSE(isLeakValid(HmGC{}, nullptr, "KNOWNLEAK ENDL"));
}

TEST(HmGC, isNoHeapForDebugging)
{
    EXPECT_FALSE(HmGC::isMemDebugLoaded());
    const std::unique_ptr<int> leak = std::make_unique<int>(1);
    EXPECT_NO_THROW({
        HmGC collector{};
        collector.setOutput(nullptr);
        collector.setThrowException(true);
        collector.setStackDump(true);
        HmGC copy{};
        copy = collector;
    });
}

TEST(HmGCEx, tellsOfLeaks)
{
    try {
        throw HmGCEx::ExGarbageDetected("src/base/test", 12);
    } catch (Vn::ExBase const& failure) {
        EXPECT_STREQ(failure.getReason(), "Garbage Collector has detected leaks.");
        EXPECT_STREQ(failure.getFileName(), "src/base/test");
        EXPECT_EQ(failure.getLineNo(), 12);
        const std::unique_ptr<Vn::ExBase> copy(failure.clone());
        auto const* const same = dynamic_cast<HmGCEx::ExGarbageDetected const*>(copy.get());
        ASSERT_NE(same, nullptr);
        EXPECT_STREQ(same->what(), "Garbage Collector has detected leaks.");
    }
}
