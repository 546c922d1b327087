// Private to hmgc.cpp.
#pragma once

#include <base/arrayptr.h>

#include <cstring>

namespace Vn::HmLeakFilter
{

struct Match
{
    bool isWhole;
    char const* reached;  ///< the last blank that was passed, or the end of the text
};

/// Whether the record that begins at `record` matches the call stack `frames`: each of its words, up to "ENDL",
/// begins with the text of a frame. A frame may be shorter than its word, and a record than the stack. A record that
/// isn't ended matches nothing, and neither does one that is longer than the stack, which a pointer to nothing ends.
/// Null frames are a stack without any.
inline Match match(char const* record, ArrayPtr<char> const* frames)
{
    char const* reached = record;
    for (ArrayPtr<char> const* frame = frames;; ++frame) {
        char const* const blank = std::strchr(reached, ' ');
        if (blank == nullptr)
            return {false, reached + std::strlen(reached)};
        char const* const word = blank + 1;
        reached = blank;
        if (std::strncmp(word, "ENDL", 4) == 0)
            return {true, reached};
        if (frame == nullptr || !*frame || std::strncmp(word, frame->get(), std::strlen(frame->get())) != 0)
            return {false, reached};
        reached = word;
    }
}

/// Whether some record of `text` matches the call stack. Records are "KNOWNLEAK", words and "ENDL", separated by
/// single blanks; what stands between records doesn't matter, nor does it how the text is malformed.
inline bool knows(char const* text, ArrayPtr<char> const* frames)
{
    char const* position = text;
    while ((position = std::strstr(position, "KNOWNLEAK")) != nullptr) {
        const Match found = match(position, frames);
        if (found.isWhole)
            return true;
        position = found.reached;
    }
    return false;
}

}  // namespace Vn::HmLeakFilter
