// Lists of known leaks of any kind, with call stacks of any kind: no look beyond either, and the answer is that of the
// rule written out with words. Frames and list are separated by zeros; the list comes last.
#include <base/duplicatestring.h>
#include <base/hmleakfilter_p.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
constexpr char recordMark[] = "KNOWNLEAK";

/// Whether the record at the beginning of `text` matches; `end` becomes where it was given up.
bool matchesInWords(std::string const& text, std::size_t& end, std::vector<std::string> const& stack)
{
    for (std::size_t i = 0;; ++i) {
        const std::size_t blank = text.find(' ', end);
        if (blank == std::string::npos) {
            end = text.size();
            return false;
        }
        end = blank;
        if (text.compare(blank + 1, 4, "ENDL") == 0)
            return true;
        if (i == stack.size() || text.compare(blank + 1, stack[i].size(), stack[i]) != 0)
            return false;
        end = blank + 1;
    }
}

bool isKnownInWords(std::string const& text, std::vector<std::string> const& stack)
{
    for (std::size_t at = text.find(recordMark); at != std::string::npos; at = text.find(recordMark, at))
        if (matchesInWords(text, at, stack))
            return true;
    return false;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::vector<std::string> stack(1);
    for (std::size_t i = 0; i < size; ++i)
        if (data[i] == 0)
            stack.emplace_back();
        else
            stack.back().push_back(static_cast<char>(data[i]));
    const std::string text = stack.back();
    stack.pop_back();

    const std::unique_ptr<Vn::ArrayPtr<char>[]> frames(new Vn::ArrayPtr<char>[stack.size() + 1]);
    for (std::size_t i = 0; i < stack.size(); ++i)
        frames[i] = Vn::duplicateString(stack[i].c_str());
    const Vn::ArrayPtr<char> exact = Vn::duplicateString(text.c_str());
    if (Vn::HmLeakFilter::knows(exact, frames.get()) != isKnownInWords(text, stack))
        std::abort();
    return 0;
}
