#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>

namespace Vn
{

template <class Alias>
class InContextAliasMgr;

/// One possible source of a setting's text: an option, an environment variable, a default, or an override. Has a value
/// from the start of its kind to the stop, if the source has one.
/// Tests: tests/base/incontextaliastest.cpp.
class VN_BASE_EXPORT InContextAliasBase
{
public:
    /// `description` is text for people; null counts as empty.
    explicit InContextAliasBase(char const* description);
    InContextAliasBase& operator=(InContextAliasBase const&) = delete;

    virtual ~InContextAliasBase();

    /// A further alias of the same source, made with `new`; the caller owns it.
    virtual InContextAliasBase* clone() const = 0;

    /// Of several sources that have a value, the one of highest priority counts.
    virtual unsigned long getPriority() const = 0;

    virtual char const* getKey() const = 0;

    /// Replaces the value by a copy of `value`; null leaves the value as it is. Either way the alias is initialised.
    void initialize(char const* value);

    /// Keeps the value, which can't be read any more.
    void finalize();

    /// Whether there is a value to read.
    bool isValid() const { return _initialized && _value; }

    /// Throws InEx::ExUninitializedObject outside the life of its kind, and InEx::ExInvalidObject without a value;
    /// both name the description.
    char const* getValue() const;

    char const* getDescription() const;

protected:
    InContextAliasBase(InContextAliasBase const& other);

private:
    friend class InVariableBase;
    template <class T>
    friend class InVariable;

    [[noreturn]] void throwNotValid() const;
    void convert();

    bool _initialized;
    ArrayPtr<char> _value;
    ArrayPtr<char> _description;

    // What the value says to a variable of another type, once one has chosen this source; follows the value from then on.
    bool _isConverted = false;
    bool _truth = false;
    int _number = 0;
};

/// The kinds of sources. From the strongest: override 4294967295, option 15, environment 10, default 0.
class InInitOvr
{};
class InInitArg
{};
class InInitEnv
{};
class InInitDef
{};

/// A source of one kind; four kinds exist. `Unique` is 1 for kinds in which a key can be declared only once. Static
/// objects, in one source file with the variables that use them:
///
///     static Vn::InContextAlias<Vn::InInitArg, 1> depthOption("d:", "-d LEVELS: how deep to look");
///     static Vn::InContextAlias<Vn::InInitEnv, 1> depthVariable("PALETTE_DEPTH", "environment");
///     static Vn::InContextAlias<Vn::InInitDef, 0> depthDefault("3", "default");
///     static Vn::InVariable<int> depth("palette.depth", palettePackage, depthOption, depthVariable, depthDefault);
///
/// All are made before their kind has started; afterwards the constructor and clone() throw
/// InEx::ExNoNewContextAliasAfterInit. Belongs to the thread that drives the start.
/// Tests: tests/base/incontextaliastest.cpp.
template <class Kind, int Unique>
class InContextAlias : public InContextAliasBase
{
public:
    using KindTag = Kind;

    /// `key` is, by kind: the override's text; an option letter, with a colon behind it if the option takes a value;
    /// the name of an environment variable; the default's text. Null counts as empty. Throws
    /// InEx::ExContextAliasAlreadyDefined for a second declaration of a key of a unique kind.
    InContextAlias(char const* key, char const* description);
    ~InContextAlias() override;

    InContextAliasBase* clone() const override;
    unsigned long getPriority() const override;
    char const* getKey() const override;

    /// Run-time type name of this class, to compare with InVariableBase::initSource().
    static char const* initSourceString();

protected:
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
