#pragma once

#include <base/baseexport.h>
#include <base/list.h>
#include <base/objptr.h>

#include <iosfwd>

namespace Vn
{

class EnvVar;

/// The living objects in the order in which they were made; it owns none. A list that an object leaves without a walk
/// through the others.
///
///     for (Vn::EnvVar* variable : Vn::EnvVar::getRegistry())
///         variable->refresh();
///
/// A copy is one of the list. One thread at a time.
/// Tests: tests/base/envvartest.cpp.
class VN_BASE_EXPORT EnvVarRegistry
{
public:
    /// @{
    /// As a list's. The elements can't be exchanged in place: an iterator is one to constant pointers.
    using value_type = EnvVar*;
    using size_type = List<EnvVar*>::size_type;
    using const_iterator = List<EnvVar*>::const_iterator;
    using iterator = const_iterator;
    /// @}

    /// Holds none.
    EnvVarRegistry();

    /// @{
    /// Lists what `other` does.
    EnvVarRegistry(EnvVarRegistry const& other);
    EnvVarRegistry& operator=(EnvVarRegistry const& other);
    /// @}
    ~EnvVarRegistry();

    /// @{
    /// As a list's: from the object made first to the one made last.
    const_iterator begin() const { return _variables.begin(); }
    const_iterator end() const { return _variables.end(); }
    auto rbegin() const { return _variables.rbegin(); }
    auto rend() const { return _variables.rend(); }
    size_type size() const { return _variables.size(); }
    bool empty() const { return _variables.empty(); }
    EnvVar* front() const { return _variables.front(); }
    EnvVar* back() const { return _variables.back(); }
    /// @}

    /// The same objects as a list.
    operator List<EnvVar*> const&() const { return _variables; }

    /// @{
    /// Lists `variable`, last or first. Objects do so by themselves when they are made. Without memory this throws,
    /// and the registry stays as it was.
    void push_back(EnvVar* variable);
    void push_front(EnvVar* variable);
    /// @}

    /// Takes `variable` out wherever it stands.
    void remove(EnvVar* variable);

    /// Takes all out; the objects stay as they are.
    void clear();

private:
    class Places;

    List<EnvVar*> _variables;
    ObjPtr<Places> _places;
};

/// An environment variable with a default, for programs that list what configures them.
///
///     static Vn::EnvVar folder("CACHE_FOLDER", "/tmp");
///     open(folder.getValue());
///     std::cout << Vn::EnvVar::getRegistry() << "\n";    // all of them, one line each
///
/// It needs no start of the library. The environment is read when the object is made and by refresh(). The value is a
/// pointer into the environment: once the variable has changed, call refresh() before using the value again. Name and
/// default are not copied and must outlive the object.
///
/// Nothing is locked: make and destroy objects on one thread, for instance as static objects. The registry is never
/// destroyed, so they may be destroyed at any time, also by the destructor of the last static object.
/// Tests: tests/base/envvartest.cpp.
class VN_BASE_EXPORT EnvVar
{
public:
    /// Enters the registry and looks the variable up. The default may be null.
    EnvVar(char const* name, char const* defaultValue);

    /// Copies name, value and default. The copy does not enter the registry, so it isn't listed.
    EnvVar(EnvVar const& other);

    /// Copies name, value and default; both objects stay registered as they were.
    EnvVar& operator=(EnvVar const&) = default;

    /// Leaves the registry.
    virtual ~EnvVar();

    /// Looks the variable up again; the old value must not be used any more.
    virtual void refresh();

    /// Prints name, value and default without a line end, "NIL" for what is null:
    ///
    ///     name              CACHE_FOLDER value "NIL" default "/tmp"
    ///
    /// The value is the variable's own, so it shows "NIL" even where the default stands in for it. The name is
    /// right-aligned in 25 characters. The stream's flags are left as they were.
    virtual std::ostream& dump(std::ostream& stream) const;

    /// The name as it was given.
    char const* getName() const { return _name; }

    /// The variable's value, or the default, which may be null. A variable set to the empty text has that as its
    /// value.
    char const* getValue() const { return _value != nullptr ? _value : _default; }

    /// All existing objects that were not made by copying. Made at first use and never destroyed.
    static EnvVarRegistry& getRegistry();

    /// Changes the environment by "NAME=value"; objects see it at their next refresh(). Throws what
    /// OsEnv::putVariable() throws. Not while another thread reads the environment.
    static void putEnv(char const* assignment);

protected:
    /// Writes "name " and the name, right-aligned in 25 characters; a longer name overflows.
    std::ostream& dumpName(std::ostream& stream) const;

    /// The variable's own value; null if it isn't set.
    char const* getOwnValue() const { return _value; }

private:
    char const* _name;
    char const* _value;
    char const* _default;
};

/// A whole number from the environment.
///
///     static Vn::EnvIntVar depth("CACHE_DEPTH", 5);    // unset: 5; "12 MB": 12; "abc": 0, and not 5
///
/// Text that isn't a number is 0; beyond an `int` it is the nearest limit. Threads and ownership as EnvVar.
/// Tests: tests/base/envvartest.cpp.
class VN_BASE_EXPORT EnvIntVar : public EnvVar
{
public:
    /// The default counts only while the variable is unset.
    EnvIntVar(char const* name, int defaultValue);

    /// Looks the variable up and converts it again.
    void refresh() override;

    /// As EnvVar::dump(), with the numbers in place of the quoted texts: ` value 12 default 5`.
    std::ostream& dump(std::ostream& stream) const override;

    /// The number as it was at the last refresh().
    int getValue() const { return _intValue; }

private:
    void compute();

    int _intValue;
    int _intDefault;
};

/// A number from the environment, converted as `std::atof` does, in the program's locale.
///
///     static Vn::EnvDoubleVar scale("VIEW_SCALE", 1.5);    // unset: 1.5; "2e3": 2000.0; "abc": 0.0
///
/// Threads and ownership as EnvVar.
/// Tests: tests/base/envvartest.cpp.
class VN_BASE_EXPORT EnvDoubleVar : public EnvVar
{
public:
    /// The default counts only while the variable is unset.
    EnvDoubleVar(char const* name, double defaultValue);

    /// Looks the variable up and converts it again.
    void refresh() override;

    /// As EnvIntVar::dump(), with the numbers in the stream's own format.
    std::ostream& dump(std::ostream& stream) const override;

    /// The number as it was at the last refresh().
    double getValue() const { return _doubleValue; }

private:
    void compute();

    double _doubleValue;
    double _doubleDefault;
};

/// Same as EnvVar::dump().
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, EnvVar const& variable);

/// For each object a line end and then its dump(), so the output begins with a line end and has none at its end.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, EnvVarRegistry const& registry);

}  // namespace Vn
