#pragma once

#include <base/baseexport.h>

namespace Vn
{

/// Walks an argument vector in the manner of POSIX getopt, without global state and without changing the vector.
///
///     Vn::InOptionParser parser(argc, argv, "vo:");
///     for (int option = parser.getOption(); option != -1; option = parser.getOption())
///         use(option, parser.getValue());
///     operands(argv + parser.getArgumentIndex());
///
/// Letters may stand together (`-ab`); a value stands behind its letter or in the next element. The first element
/// that is no option ends the walk, and so does one that begins with two dashes, which is consumed.
///
///     -ofile    "o:"  ->  'o', value "file"
///     -o -x     "o:"  ->  'o', value "-x"
///     -ab       "ab"  ->  'a', then 'b'
///     -o        "o:"  ->  'o', value null    // the vector ends
///     --long    any   ->  -1, consumed
///     -         any   ->  -1, not consumed
///
/// Throws nothing, prints nothing, allocates nothing. Owns nothing: vector and option string must outlive the parser.
/// One thread at a time for each parser; parsers are independent.
/// Tests: tests/base/inoptionparsertest.cpp.
class VN_BASE_EXPORT InOptionParser
{
public:
    /// Stands on `argv[0]`, which is skipped. `options` are the letters, each followed by a colon if the option takes
    /// a value. Null counts as empty, and so does a vector without elements; a null element counts as one that is no
    /// option.
    InOptionParser(int argc, char** const argv, char const* options);

    /// The next option's letter, widened from `signed char`; 63 ('?') for a letter that isn't an option, after which
    /// the walk may go on with the next letter; -1 at the end and ever after.
    ///
    /// A colon in an element finds a colon of the option string and so counts as known. A letter of the value 255
    /// can't be told from the end.
    int getOption();

    /// Value of the option that getOption() returned last; null if it takes none, or if the vector ended.
    char const* getValue() const;

    /// Index of the element being read. At the end, index of the first element that wasn't consumed, `argc` if all
    /// were.
    int getArgumentIndex() const;

    /// For an option with several values: takes the next element, whatever it begins with, as the value and returns
    /// it.
    ///
    ///     -o a b c, "o:"  ->  getValue() "a", then "b", "c", null
    ///
    /// Null too if the value was null before.
    char const* gotoNextValue();

    /// Splits the next part off a text of the form `name=value,name`, which is modified in place, and moves
    /// `*optionp` behind it. Call while `**optionp` isn't the terminator.
    ///
    ///     tokens {"ro", "size", null}, text "ro,size=10,bad"
    ///     ->   0, *valuep null
    ///     ->   1, *valuep "10"
    ///     ->  -1, *valuep "bad"    // a name that isn't there
    ///
    /// Returns the name's index in the null-terminated `tokens`. "a=" has an empty value, "a" none. Null `tokens`
    /// count as an empty array.
    static int getSubOption(char** optionp, char* const* tokens, char** valuep);

private:
    char const* elementAt(int index) const;
    void consumeElement();
    void takeNextElement();
    int finish();

    int _argc;
    char** _argv;
    char const* _options;
    char const* _value;
    int _argIndex;
    char const* _cursor;  ///< last character consumed; null once the walk has ended
};

}  // namespace Vn
