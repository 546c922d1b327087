// Private to incommandline.cpp, inusagereport.cpp and invaluekind.cpp.
#pragma once

#include <string>

namespace Vn
{

class InVariableBase;

/// What the type of a variable makes of a text. A type that settings may have gets its row in invaluekind.cpp.
struct InValueKind
{
    /// Stands for a value in a usage text whose declaration has no word of its own.
    char const* placeholder;

    /// Whether all of the text is a value of the type. Stricter than getValue(), which takes what a text begins with.
    bool (*isValue)(char const* text);

    /// What should stand in the place of a text that isn't one, as "a whole number".
    std::string (*describe)(char const* text);

    /// The kind of the variable's type.
    static InValueKind const& of(InVariableBase const& variable);
};

}  // namespace Vn
