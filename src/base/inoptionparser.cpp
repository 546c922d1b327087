// Options one by one, in the manner of getopt() but without global state.
//
// `_cursor` stands on the last character consumed, in the element `_argIndex`. A step moves it on by one; if it then
// stands on the terminator, the next element is looked at: one that begins with a dash is entered, anything else ends
// the parsing. An option whose value is the rest of its element puts the cursor on the end of the element. One whose value
// is the next element only counts that element: the cursor stands on the end of an element already, and the next step
// leaves for the one behind `_argIndex`. So several letters may stand in one element, and the constructor only has to put
// the cursor on the end of element 0.
//
// Vectors may be wrong in ways that the rule doesn't speak of (a null element, an empty one, no element 0, a call
// after the end): the parser then ends, or takes the element as empty, and never reads outside an element.
#include <base/inoptionparser.h>

#include <cstring>

namespace Vn
{
namespace
{
constexpr int unknownOption = '?';

/// Stands for an element without characters: its last one is the blank, and behind that it ends.
constexpr char emptyElement[] = " ";

char const* lastCharacterOf(char const* element)
{
    return *element != '\0' ? element + std::strlen(element) - 1 : emptyElement;
}
}  // namespace

InOptionParser::InOptionParser(int argc, char** const argv, char const* options)
    : _argc(argv != nullptr ? argc : 0),
      _argv(argv),
      _options(options != nullptr ? options : ""),
      _value(nullptr),
      _argIndex(0),
      _cursor(nullptr)
{
    if (_argc > 0)
        consumeElement();
}

/// Returns a `char` widened with its sign, so a letter beyond ASCII is negative.
int InOptionParser::getOption()
{
    _value = nullptr;
    if (_cursor == nullptr)
        return -1;
    ++_cursor;
    if (*_cursor == '\0') {
        ++_argIndex;
        if (_argIndex == _argc)
            return finish();
        char const* const element = elementAt(_argIndex);
        if (element[0] != '-' || element[1] == '\0')
            return finish();
        // Intended: "--long" ends the options just as "--" does, and is consumed. Do not mend.
        if (element[1] == '-') {
            ++_argIndex;
            return finish();
        }
        _cursor = element + 1;
    }

    // Intended: a colon finds the colon of an option string and so counts as a letter. Do not mend.
    const int letter =
        static_cast<signed char>(*_cursor);  // NOLINT(bugprone-signed-char-misuse): signed everywhere
    char const* const known = std::strchr(_options, *_cursor);
    if (known == nullptr)
        return unknownOption;
    if (known[1] != ':')
        return letter;

    if (_cursor[1] != '\0') {
        _value = _cursor + 1;
        consumeElement();
    } else {
        takeNextElement();  // even if it begins with a dash
    }
    return letter;
}

char const* InOptionParser::getValue() const
{
    return _value;
}

int InOptionParser::getArgumentIndex() const
{
    return _argIndex;
}

/// Without a value there was no option that could have a further one.
char const* InOptionParser::gotoNextValue()
{
    if (_value != nullptr)
        takeNextElement();
    return _value;
}

/// Writes terminators into the string, over commas and equals signs, so that names and values can be returned without
/// copies.
int InOptionParser::getSubOption(char** optionp, char* const* tokens, char** valuep)
{
    char* const name = *optionp;
    char* scan = name + std::strcspn(name, ",=");
    *valuep = nullptr;
    if (*scan == '=') {
        *scan = '\0';
        *valuep = ++scan;
        scan += std::strcspn(scan, ",");
    }
    if (*scan == ',')
        *scan++ = '\0';
    *optionp = scan;

    for (int index = 0; tokens != nullptr && tokens[index] != nullptr; ++index)
        if (std::strcmp(name, tokens[index]) == 0)
            return index;
    *valuep = name;
    return -1;
}

/// A null element counts as empty.
char const* InOptionParser::elementAt(int index) const
{
    return _argv[index] != nullptr ? _argv[index] : "";
}

/// Puts the cursor on the last character of the element being read, so that the next step leaves it.
void InOptionParser::consumeElement()
{
    _cursor = lastCharacterOf(elementAt(_argIndex));
}

/// Makes the next element the value, or null the value if there is none. The cursor stands on the end of an element.
void InOptionParser::takeNextElement()
{
    const bool hasNext = _argIndex + 1 < _argc;
    if (hasNext)
        ++_argIndex;
    _value = hasNext ? _argv[_argIndex] : nullptr;
}

/// Without a cursor every further call returns -1.
int InOptionParser::finish()
{
    _cursor = nullptr;
    return -1;
}

}  // namespace Vn
