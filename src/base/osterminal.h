#pragma once

#include <base/baseexport.h>

#include <string>
#include <string_view>

namespace Vn
{

/// What a program must know of the terminal that it may print to.
///
///     std::cout << Vn::OsTerminal::shown(fileName) << "\n";    // a name with an escape sequence prints as text
///     if (Vn::OsTerminal::isStandardError())
///         std::cerr << "\r45 %" << std::flush;                 // progress, where somebody watches
///
/// Static only, without state: any thread.
/// Tests: tests/base/osterminaltest.cpp.
class VN_BASE_EXPORT OsTerminal
{
public:
    OsTerminal() = delete;

    /// @{
    /// Whether the stream is a terminal, and neither a file nor a pipe. False for a closed stream.
    static bool isStandardOutput();
    static bool isStandardError();
    /// @}

    /// The columns that a line may have: those of the terminal if standard output is one, else the number in the
    /// variable COLUMNS, else 80.
    ///
    ///     terminal of 132 columns              ->  132
    ///     pipe, COLUMNS=100                    ->  100
    ///     pipe, COLUMNS unset, "wide", or "0"  ->  80
    static int getColumns();

    /// A text from outside (an argument, a file's name, a variable) as a terminal may get it: control characters
    /// stand as text and are not obeyed. The result has no line end.
    ///
    ///     "a\nb"            ->  "a\\nb"        // also \t and \r
    ///     "\x1b[31mred"     ->  "\\x1b[31mred"
    ///     "caf\u00e9"       ->  as it is: UTF-8 passes
    ///     "\u0085"          ->  "\\x85"        // a control character of two bytes; the byte 0x85 alone is shown alike
    ///     "\u202e"          ->  "\\u202e"      // and others that change the order in which text is shown
    ///     "C:\\new"         ->  as it is: a backslash is not doubled, so the text is for people alone
    ///
    static std::string shown(std::string_view text);
};

}  // namespace Vn
