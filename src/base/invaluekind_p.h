// Private to incommandline.cpp, inusagereport.cpp and invaluekind.cpp.
#pragma once

namespace Vn
{

class InVariableBase;

/// What a variable's type makes of a text, where only the running program knows the type. A type that settings may have
/// gets its row in invaluekind.cpp.
class InValueKind
{
public:
    /// `variable` isn't needed afterwards.
    explicit InValueKind(InVariableBase const& variable) noexcept;

    /// What such a text is called: "whole number", "true or false", "text".
    char const* getName() const noexcept { return _name; }

    /// Whether all of the text is a value of the type. Stricter than getValue(), which takes what a text begins with.
    ///
    ///     int   "12", " -3 ", "+7"                not "", "12abc", "2147483648"
    ///     bool  "", "0", "1", "true", "False"     not "no", "off": these read as true
    ///     text  each
    ///
    bool isWhole(char const* text) const noexcept { return _isWhole(text); }

    /// What a variable of the type bool reads from the text.
    static bool readTruth(char const* text) noexcept;

private:
    char const* _name;
    bool (*_isWhole)(char const* text) noexcept;
};

}  // namespace Vn
