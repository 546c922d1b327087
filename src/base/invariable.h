#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/incontextalias.h>
#include <base/inpackageinit.h>
#include <base/invalueform.h>

#include <set>
#include <string>
#include <type_traits>

namespace Vn
{

/// A named setting of a package, without its type: where its text comes from.
///
///     Vn::InVariableBase::overrideViaHandle("palette.depth", "7", "test");          // before the start
///     Vn::InVariableBase const* depth = Vn::InVariableBase::queryViaHandle("palette.depth");
///
/// Of its sources the one of highest rank that has a value is chosen when the package starts; among equals, the one
/// given first. Without any the variable stays invalid, which is no error until it is read.
///
/// Owns clones of its sources; doesn't own the package. Belongs to the thread that drives the start. Reading is
/// thread-safe while no package starts or stops.
/// Tests: tests/base/invariabletest.cpp.
class VN_BASE_EXPORT InVariableBase
{
public:
    InVariableBase(InVariableBase const&) = delete;
    InVariableBase& operator=(InVariableBase const&) = delete;

    /// Frees the handle for another variable, destroys the clones and leaves the package, which must still exist.
    virtual ~InVariableBase();

    /// Takes a pending override and chooses the source. For the owning package, before its performInitialize().
    void initialize();

    /// Releases the source: reading throws from here on. For the owning package, after its performFinalize().
    void finalize();

    /// Whether a source is chosen, so that the variable can be read.
    bool isValid() const { return _contextAlias != nullptr; }

    /// The unique name. Never null.
    char const* getHandle() const;

    /// Run-time type name of the chosen source, equal to InContextAlias<...>::initSourceString() of its kind. Throws
    /// InEx::ExUninitializedObject, with the handle, if none is chosen.
    char const* initSource() const;

    /// The variable of that handle, or null if there is none. Null counts as the empty handle.
    static InVariableBase const* queryViaHandle(char const* const handle);

    /// Gives the variable of that handle a text that beats all its sources. The variable may be made later.
    ///
    ///     overrideViaHandle("palette.depth", "7", "test");
    ///     overrideViaHandle("palette.depth", "8", "test");    // replaces the first
    ///     ... the start ...
    ///     depth.getValue() == 8
    ///
    /// All texts are copied; null counts as empty. Throws InEx::ExVariableAlreadyInitialized for a variable whose
    /// package runs, and otherwise InEx::ExNoNewContextAliasAfterInit once the package `initialize` has started.
    /// InInitMgr::finalize() deletes overrides that no variable has taken.
    static void overrideViaHandle(char const* const handle, char const* const value, char const* const description);

    /// Whether an override waits for the variable of that handle; false again once the variable has taken it.
    static bool isOverridden(char const* const handle);

protected:
    /// Marks a parameter for a source that isn't given. Only its address counts.
    class VN_BASE_EXPORT InContextAliasDummy : public InContextAliasBase
    {
    public:
        /// Its description is "InVariableBase::_dummy".
        InContextAliasDummy();

        /// @{
        /// Aborts the program: nothing may call these.
        InContextAliasBase* clone() const override;
        unsigned long getPriority() const override;
        char const* getKey() const override;
        /// @}
    };

    /// The one such mark, default of the parameters `alias2` to `alias10`.
    static InContextAliasDummy _dummy;

    /// Registers under `handle` and with `package`, which must outlive the variable, and clones each source.
    ///
    /// Throws InEx::ExHandleAlreadyInUse for the handle of an existing variable, and
    /// InEx::ExNoNewContextAliasAfterInit once a source's kind has its values. After a failure nothing of the
    /// variable is left anywhere. `handle` is copied; null counts as empty.
    InVariableBase(char const* const handle, InPackageInitBase& package, InContextAliasBase const& alias1,
                   InContextAliasBase const& alias2 = _dummy, InContextAliasBase const& alias3 = _dummy,
                   InContextAliasBase const& alias4 = _dummy, InContextAliasBase const& alias5 = _dummy,
                   InContextAliasBase const& alias6 = _dummy, InContextAliasBase const& alias7 = _dummy,
                   InContextAliasBase const& alias8 = _dummy, InContextAliasBase const& alias9 = _dummy,
                   InContextAliasBase const& alias10 = _dummy);

    /// The chosen source, or null.
    InContextAliasBase const* contextAlias() const { return _contextAlias; }

    /// The chosen source, which has a value. Throws InEx::ExUninitializedObject if there is none, and what
    /// InContextAliasBase::getValue() throws.
    InContextAliasBase const& getSource() const
    {
        if (_contextAlias == nullptr || !_contextAlias->isValid())
            throwNoSource();
        return *_contextAlias;
    }

    /// Deletes the overrides that no variable has taken.
    static void clearPendingOverrides();

private:
    friend class InDeclarations;
    friend class InInitMgr;
    friend class InPackageInit;

    class Registry;
    class Overrides;

    struct HigherPriority
    {
        bool operator()(InContextAliasBase const* left, InContextAliasBase const* right) const
        {
            return left->getPriority() > right->getPriority();
        }
    };

    using Override = InContextAlias<InInitOvr, 0>;

    [[noreturn]] void throwNoSource() const;
    void initialize(bool isTelling);
    void enterRegistry();
    void leaveRegistry() noexcept;
    void cloneAlias(InContextAliasBase const& alias);
    void deleteAliases() noexcept;
    void takeOverride();

    static Registry* _registry;           ///< the variables by handle; null while there is none
    static Overrides* _pendingOverrides;  ///< by handle; owns the aliases; null while there is none

    InContextAliasBase const* _contextAlias;
    std::multiset<InContextAliasBase*, HigherPriority> _aliases;  ///< owned
    InPackageInitBase* _package;
    ArrayPtr<char> _handle;
};

/// A setting. incontextalias.h shows how to declare one with its sources. T is one of these types; with another one the
/// compiler says so, and names them:
///
///     int, long                  a whole number
///     float, double              a number
///     bool                       true or false
///     std::chrono::milliseconds  a time: "250ms", "1.5s", "2min", "1h"; without a unit, milliseconds
///     char const*, std::string   the text
///
/// For example
///
///     int levels = depth.getValue();
///
/// InValueForm tells how a text is read, and whether a whole text is a value of the type. Threads and ownership as
/// InVariableBase.
/// Tests: tests/base/invariabletest.cpp, tests/base/invariabletypestest.cpp.
template <class T>
class VN_BASE_SHARED_TYPE InVariable : public InVariableBase
{
    static_assert(InSettingType<T>, "a setting is an int, long, bool, float, double, char const*, std::string "
                                    "or std::chrono::milliseconds");

public:
    /// Same as the constructor of InVariableBase, which says what throws. One source at least, ten at most; the order
    /// matters only among sources of one kind.
    InVariable(char const* const handle, InPackageInitBase& package, InContextAliasBase const& alias1,
               InContextAliasBase const& alias2 = _dummy, InContextAliasBase const& alias3 = _dummy,
               InContextAliasBase const& alias4 = _dummy, InContextAliasBase const& alias5 = _dummy,
               InContextAliasBase const& alias6 = _dummy, InContextAliasBase const& alias7 = _dummy,
               InContextAliasBase const& alias8 = _dummy, InContextAliasBase const& alias9 = _dummy,
               InContextAliasBase const& alias10 = _dummy);
    InVariable(InVariable const&) = delete;
    InVariable& operator=(InVariable const&) = delete;

    /// What the text of the chosen source says, as InValueForm<T>::read() reads it.
    ///
    ///     char const*   the text itself, valid while the source lives
    ///     std::string   a copy of it
    ///     int, long     as `atoi` does: "12abc" is 12, "abc" is 0; beyond the type the nearest limit
    ///     bool          false for "0" and for "false" in any case; true for all else, "" and "no" included
    ///     double        "1.5" and "1.5x" are 1.5, "abc" is 0; the point is the point under every locale
    ///     milliseconds  "1.5s" is 1500, "250" is 250, "abc" is 0
    ///
    /// Throws InEx::ExUninitializedObject, with the handle, before the package's start, after its stop, and if no
    /// source has a value.
    ///
    /// A read of an `int`, a `bool` or a `char const*` is a few loads: what a text of up to 15 characters says is found
    /// when its source gets it. The other types are read from the text each time, which takes about 10 ns. Only a
    /// std::string allocates.
    // Always inline: on Windows an instance that the library exports lacks what stands in the class.
    [[gnu::always_inline]] T getValue() const
    {
        char const* const text = getSource()._value;
        if constexpr (std::is_same_v<T, int>)
            return InContextAliasBase::ValueBuffer::getNumber(text);
        else if constexpr (std::is_same_v<T, bool>)
            return InContextAliasBase::ValueBuffer::getTruth(text);
        else if constexpr (std::is_same_v<T, char const*> || std::is_same_v<T, std::string>)
            return text;
        else
            return InValueForm<T>::read(text);
    }

private:
    [[maybe_unused]] T _unused;  ///< part of the interface's layout
};

extern template class VN_BASE_EXPORT InVariable<int>;
extern template class VN_BASE_EXPORT InVariable<bool>;
extern template class VN_BASE_EXPORT InVariable<char const*>;

}  // namespace Vn

#include <base/invariable.imp>
