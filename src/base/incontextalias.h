#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>

#include <cstddef>
#include <cstring>

namespace Vn
{

template <class Alias>
class InContextAliasMgr;

/// One possible source of a setting's text, without its kind: an option, an environment variable, a default, or an
/// override.
///
///     if (alias.isValid())
///         std::cout << alias.getKey() << " = " << alias.getValue() << "\n";    // "PALETTE_DEPTH = 5"
///
/// It has a value from the start of its kind to the stop, if the source has one. It owns its texts. Belongs to the
/// thread that drives the start; reading is thread-safe while nothing starts or stops.
/// Tests: tests/base/incontextaliastest.cpp.
class VN_BASE_EXPORT InContextAliasBase
{
public:
    /// Copies `description`, a text for people; null counts as empty. There is no value yet.
    explicit InContextAliasBase(char const* description);
    InContextAliasBase& operator=(InContextAliasBase const&) = delete;

    /// Texts that getValue() and getDescription() have returned end here.
    virtual ~InContextAliasBase();

    /// A further alias of the same source, made with `new`; the caller owns it. Throws
    /// InEx::ExNoNewContextAliasAfterInit once the sources of that kind have their values.
    virtual InContextAliasBase* clone() const = 0;

    /// The rank of the source, 0 to 4294967295. Of several sources that have a value, the highest rank wins.
    virtual unsigned long getPriority() const = 0;

    /// What names the source within its kind: see InContextAlias. Never null.
    virtual char const* getKey() const = 0;

    /// Gives the alias its value; it is initialised from here on.
    ///
    ///     initialize("5")      ->  isValid(), getValue() == "5"
    ///     initialize(nullptr)  ->  the value stays as it was, without one as well
    ///
    /// Copies `value`, which may be the old value itself.
    void initialize(char const* value);

    /// Ends the time in which the value can be read. The value itself is kept for the next initialize(nullptr).
    void finalize();

    /// Whether the alias is initialised and has a value. The empty text is a value.
    bool isValid() const { return _initialized && _value; }

    /// The value; valid until the next initialize() with a text.
    ///
    ///     before initialize(), after finalize()  ->  throws InEx::ExUninitializedObject
    ///     initialised without a value            ->  throws InEx::ExInvalidObject
    ///
    /// Both messages name the description.
    char const* getValue() const;

    /// The text for people. Never null.
    char const* getDescription() const;

protected:
    /// For clone(): copies value, description and whether the alias is initialised.
    InContextAliasBase(InContextAliasBase const& other);

private:
    friend class InVariableBase;
    template <class T>
    friend class InVariable;

    class ValueBuffer;

    [[noreturn]] void throwNotValid() const;

    bool _initialized;
    ArrayPtr<char> _value;  ///< made by ValueBuffer
    ArrayPtr<char> _description;
};

/// The array that holds an alias's value. Behind a short text stands what that says as an `int` and as a `bool`, so that
/// reading a setting parses nothing:
///
///     bytes 0 to 15    the text, filled up with zeros
///     bytes 16 to 19   the number
///     byte 20          the truth value
///
/// Byte 15 of a text of 16 characters or more isn't 0. Such a text is parsed at each read: numbers are shorter.
class InContextAliasBase::ValueBuffer
{
public:
    /// A copy of `text`, with what belongs behind it.
    static ArrayPtrRet<char> make(char const* text);

    /// @{
    /// What a text from make() says.
    static int getNumber(char const* text)
    {
        if (isLong(text))
            return parseNumber(text);
        int number;
        std::memcpy(&number, text + numberPlace, sizeof number);
        return number;
    }
    static bool getTruth(char const* text) { return isLong(text) || text[truthPlace] != '\0'; }
    /// @}

private:
    static constexpr std::size_t numberPlace = 16;
    static constexpr std::size_t truthPlace = numberPlace + sizeof(int);
    static constexpr std::size_t size = truthPlace + 1;

    static bool isLong(char const* text) { return text[numberPlace - 1] != '\0'; }
    VN_BASE_EXPORT static int parseNumber(char const* text);
};

/// The kinds of sources and their ranks: override 4294967295, option 15, environment 10, default 0. So an override
/// beats an option, which beats the environment, which beats a default.
class InInitOvr
{};

/// An option on the command line.
class InInitArg
{};

/// An environment variable.
class InInitEnv
{};

/// A text in the program.
class InInitDef
{};

/// A source of one kind; four kinds exist. `Unique` is 1 for kinds in which a key can be declared only once. Static
/// objects, in one source file with the variables that use them, each before what refers to it:
///
///     static Vn::InContextAlias<Vn::InInitArg, 1> depthOption("d:", "-d LEVELS: how deep to look");
///     static Vn::InContextAlias<Vn::InInitEnv, 1> depthVariable("PALETTE_DEPTH", "environment");
///     static Vn::InContextAlias<Vn::InInitDef, 0> depthDefault("3", "default");
///     static Vn::InVariable<int> depth("palette.depth", palettePackage, depthOption, depthVariable, depthDefault);
///
/// The package of such a variable depends on `initialize`, and on `initArg` if it has an option among its sources;
/// otherwise the sources may have no value yet when it starts. A variable clones its sources, so one declaration can
/// serve several variables.
///
/// Every alias is made before its kind gets its values; afterwards the constructor and clone() throw
/// InEx::ExNoNewContextAliasAfterInit. Owns copies of its texts. Belongs to the thread that drives the start.
/// Tests: tests/base/incontextaliastest.cpp.
template <class Kind, int Unique>
class InContextAlias : public InContextAliasBase
{
public:
    /// InInitOvr, InInitArg, InInitEnv or InInitDef.
    using KindTag = Kind;

    /// `key` means, by kind:
    ///
    ///     InInitArg  "v"              option -v without a value: the value is "" if it was given
    ///                "o:"             option -o with a value: "-o file" and "-ofile" give "file"
    ///     InInitEnv  "PALETTE_DEPTH"  the variable's text, "" included; no value if it is unset
    ///     InInitDef  "3"              the value itself
    ///     InInitOvr  "7"              the value itself
    ///
    /// Both texts are copied; null counts as empty. Throws InEx::ExContextAliasAlreadyDefined for a second
    /// declaration of a key of InInitArg or InInitEnv, and InEx::ExNoNewContextAliasAfterInit.
    InContextAlias(char const* key, char const* description);

    /// Leaves the manager. A key is free again once its declaration and all clones are destroyed.
    ~InContextAlias() override;

    InContextAliasBase* clone() const override;
    unsigned long getPriority() const override;
    char const* getKey() const override;

    /// Run-time type name of this class, to compare with InVariableBase::initSource():
    ///
    ///     using Option = Vn::InContextAlias<Vn::InInitArg, 1>;
    ///     std::strcmp(depth.initSource(), Option::initSourceString()) == 0    // the value came from -d
    static char const* initSourceString();

protected:
    /// For clone(): a further user of the same key. Throws InEx::ExNoNewContextAliasAfterInit.
    InContextAlias(InContextAlias const& other);

private:
    ArrayPtr<char> _key;
};

extern template class VN_BASE_EXPORT InContextAlias<InInitOvr, 0>;
extern template class VN_BASE_EXPORT InContextAlias<InInitArg, 1>;
extern template class VN_BASE_EXPORT InContextAlias<InInitEnv, 1>;
extern template class VN_BASE_EXPORT InContextAlias<InInitDef, 0>;

}  // namespace Vn

namespace VnInit
{
using Vn::InInitArg;
using Vn::InInitDef;
using Vn::InInitEnv;
using Vn::InInitOvr;
}  // namespace VnInit

#include <base/incontextalias.imp>
