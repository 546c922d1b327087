#pragma once

#include <base/arrayptr.h>
#include <base/baseexport.h>
#include <base/incontextalias.h>
#include <base/inpackageinit.h>

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <type_traits>

namespace Vn
{

/// A named setting of a package, without its type: where its text comes from.
///
/// Of its sources the one of highest priority that has a value is chosen when the package starts; of equals, the one
/// given first. Without any the variable stays invalid, which is no error until it is read. Belongs to the thread that
/// drives the start; reading is safe on any thread while no package starts or stops.
/// Tests: tests/base/invariabletest.cpp.
class VN_BASE_EXPORT InVariableBase
{
public:
    InVariableBase(InVariableBase const&) = delete;
    InVariableBase& operator=(InVariableBase const&) = delete;

    virtual ~InVariableBase();

    /// Chooses the source, and releases it again. For the owning package.
    void initialize();
    void finalize();

    /// Whether a source is chosen.
    bool isValid() const { return _contextAlias != nullptr; }

    char const* getHandle() const;

    /// Run-time type name of the chosen source, equal to InContextAlias<...>::initSourceString() of its kind. Throws
    /// InEx::ExUninitializedObject if there is none.
    char const* initSource() const;

    /// The variable of that handle, or null.
    static InVariableBase const* queryViaHandle(char const* const handle);

    /// Gives the variable of that handle a text that beats all its sources; the variable may be made later. The last
    /// override before the start counts. Throws InEx::ExVariableAlreadyInitialized for a running variable and
    /// InEx::ExNoNewContextAliasAfterInit once the package `initialize` has started.
    static void overrideViaHandle(char const* const handle, char const* const value, char const* const description);

    /// Whether an override waits for the variable of that handle; false once it has been taken.
    static bool isOverridden(char const* const handle);

protected:
    /// Marks a source that isn't given; only its address counts, and each of its operations aborts.
    class VN_BASE_EXPORT InContextAliasDummy : public InContextAliasBase
    {
    public:
        InContextAliasDummy();
        InContextAliasBase* clone() const override;
        unsigned long getPriority() const override;
        char const* getKey() const override;
    };

    static InContextAliasDummy _dummy;

    /// Registers with `package`, which must outlive the variable, and keeps a clone of each source. Throws
    /// InEx::ExHandleAlreadyInUse; after a failure nothing of the variable is left anywhere. A null handle counts as
    /// empty.
    InVariableBase(char const* const handle, InPackageInitBase& package, InContextAliasBase const& alias1,
                   InContextAliasBase const& alias2 = _dummy, InContextAliasBase const& alias3 = _dummy,
                   InContextAliasBase const& alias4 = _dummy, InContextAliasBase const& alias5 = _dummy,
                   InContextAliasBase const& alias6 = _dummy, InContextAliasBase const& alias7 = _dummy,
                   InContextAliasBase const& alias8 = _dummy, InContextAliasBase const& alias9 = _dummy,
                   InContextAliasBase const& alias10 = _dummy);

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
    friend class InInitMgr;
    friend class InPackageInit;

    static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

    struct HigherPriority
    {
        bool operator()(InContextAliasBase const* left, InContextAliasBase const* right) const
        {
            return left->getPriority() > right->getPriority();
        }
    };

    using Override = InContextAlias<InInitOvr, 0>;
    using Registry = std::map<std::string, InVariableBase*, std::less<>>;
    using Overrides = std::map<std::string, Override*, std::less<>>;

    [[noreturn]] void throwNoSource() const;
    void initialize(bool isTelling);
    void enterRegistry();
    void leaveRegistry() noexcept;
    void cloneAlias(InContextAliasBase const& alias);
    void deleteAliases() noexcept;
    void takeOverride();

    static Registry* _registry;           ///< null while there is no variable
    static Overrides* _pendingOverrides;  ///< owns the aliases; null while there is none

    InContextAliasBase const* _contextAlias;
    std::multiset<InContextAliasBase*, HigherPriority> _aliases;  ///< owned
    InPackageInitBase* _package;
    ArrayPtr<char> _handle;

    std::size_t _place = nowhere;  ///< among the variables of its package, which keeps it
};

/// A setting of type `int`, `bool` or `char const*`. incontextalias.h shows how to declare one.
///
///     int levels = depth.getValue();
///
/// Tests: tests/base/invariabletest.cpp.
template <class T>
class InVariable : public InVariableBase
{
public:
    InVariable(char const* const handle, InPackageInitBase& package, InContextAliasBase const& alias1,
               InContextAliasBase const& alias2 = _dummy, InContextAliasBase const& alias3 = _dummy,
               InContextAliasBase const& alias4 = _dummy, InContextAliasBase const& alias5 = _dummy,
               InContextAliasBase const& alias6 = _dummy, InContextAliasBase const& alias7 = _dummy,
               InContextAliasBase const& alias8 = _dummy, InContextAliasBase const& alias9 = _dummy,
               InContextAliasBase const& alias10 = _dummy);

    /// What the source's text says: `int` as `atoi` reads it, so that text that is no number gives 0; `bool` is false for
    /// "0" and for "false" in any case, and true for all else, the empty text included; `char const*` is the text itself,
    /// valid while the source lives. Throws InEx::ExUninitializedObject without a source. A read is a few loads: the text is
    /// converted when the source is chosen, and again when it gets another text.
    T getValue() const
    {
        InContextAliasBase const& source = getSource();
        if constexpr (std::is_same_v<T, int>)
            return source._number;
        else if constexpr (std::is_same_v<T, bool>)
            return source._truth;
        else
            return source._value;
    }

private:
    [[maybe_unused]] T _unused;  ///< part of the interface's layout
};

extern template class VN_BASE_EXPORT InVariable<int>;
extern template class VN_BASE_EXPORT InVariable<bool>;
extern template class VN_BASE_EXPORT InVariable<char const*>;

}  // namespace Vn

#include <base/invariable.imp>
