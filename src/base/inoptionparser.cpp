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
        if (element[1] == '-') {
            ++_argIndex;
            return finish();
        }
        _cursor = element + 1;
    }

    const int letter = static_cast<signed char>(*_cursor);
    char const* const known = std::strchr(_options, *_cursor);
    if (known == nullptr)
        return unknownOption;
    if (known[1] != ':')
        return letter;

    if (_cursor[1] != '\0') {
        _value = _cursor + 1;
        consumeElement();
    } else {
        takeNextElement();
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

char const* InOptionParser::gotoNextValue()
{
    if (_value != nullptr)
        takeNextElement();
    return _value;
}

int InOptionParser::getSubOption(char** optionp, char* const* tokens, char** valuep)
{
    char* const name = *optionp;
    char* scan = name + std::strcspn(name, ",=");
    *valuep = nullptr;
    if (*scan == '=') {
        *scan++ = '\0';
        *valuep = scan;
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

char const* InOptionParser::elementAt(int index) const
{
    return _argv[index] != nullptr ? _argv[index] : "";
}

/// Puts the cursor on the last character of the element being read, so that the next step leaves it.
void InOptionParser::consumeElement()
{
    _cursor = lastCharacterOf(elementAt(_argIndex));
}

/// Makes the next element the value, or null the value if there is none.
void InOptionParser::takeNextElement()
{
    const bool hasNext = _argIndex + 1 < _argc;
    if (hasNext)
        ++_argIndex;
    _value = hasNext ? _argv[_argIndex] : nullptr;
    consumeElement();
}

int InOptionParser::finish()
{
    _cursor = nullptr;
    return -1;
}

}  // namespace Vn
