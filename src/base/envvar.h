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
    using value_type = EnvVar*;
    using size_type = List<EnvVar*>::size_type;
    using const_iterator = List<EnvVar*>::const_iterator;
    using iterator = const_iterator;

    EnvVarRegistry();
    EnvVarRegistry(EnvVarRegistry const& other);
    EnvVarRegistry& operator=(EnvVarRegistry const& other);
    ~EnvVarRegistry();

    const_iterator begin() const { return _variables.begin(); }
    const_iterator end() const { return _variables.end(); }
    size_type size() const { return _variables.size(); }
    bool empty() const { return _variables.empty(); }
    EnvVar* front() const { return _variables.front(); }
    EnvVar* back() const { return _variables.back(); }
    operator List<EnvVar*> const&() const { return _variables; }

    // Objects enter and leave by themselves; these are for programs that list them otherwise. The registry changes, or (if
    // there is no memory) it does not.
    void push_back(EnvVar* variable);
    void push_front(EnvVar* variable);

    /// Takes `variable` out wherever it stands.
    void remove(EnvVar* variable);
    void clear();

private:
    class Places;

    List<EnvVar*> _variables;
    ObjPtr<Places> _places;
};

/// An environment variable with a default, for programs that list what steers them.
///
///     static Vn::EnvVar folder("CACHE_FOLDER", "/tmp");
///     open(folder.getValue());
///     std::cout << Vn::EnvVar::getRegistry() << "\n";    // all of them, a line each
///
/// It needs no start of the library. The environment is read when the object is made and by refresh(), and the value is
/// the environment's own text: once the variable has changed, refresh() before it is used again. Name and default are
/// not copied and must outlive the object.
/// Objects are made and destroyed on one thread. The registry is never destroyed, so they may be destroyed at any time, by
/// the destructor of the last static object as well.
/// Tests: tests/base/envvartest.cpp.
class VN_BASE_EXPORT EnvVar
{
public:
    /// The default may be null. The object enters the registry.
    EnvVar(char const* name, char const* defaultValue);

    /// A copy isn't registered.
    EnvVar(EnvVar const& other);
    EnvVar& operator=(EnvVar const&) = default;

    virtual ~EnvVar();

    /// Looks the variable up again.
    virtual void refresh();

    /// Name, value and default, "NIL" for what is null, without a line end. The value is the variable's own, so "NIL"
    /// also where a default stands in for it. The stream's format is left as it was.
    virtual std::ostream& dump(std::ostream& stream) const;

    char const* getName() const { return _name; }

    /// The variable's value, or the default, which may be null.
    char const* getValue() const { return _value != nullptr ? _value : _default; }

    static EnvVarRegistry& getRegistry();

    /// Changes the environment by "NAME=value"; objects see it at their next refresh(). Throws what
    /// OsEnv::putVariable() throws.
    static void putEnv(char const* assignment);

protected:
    /// Writes the name behind its word, at the right of 25 characters.
    std::ostream& dumpName(std::ostream& stream) const;

    /// The variable's own value; null if it isn't set.
    char const* getOwnValue() const { return _value; }

private:
    char const* _name;
    char const* _value;
    char const* _default;
};

/// A whole number. Text that isn't one is 0; what an int doesn't hold is the nearest that it does.
/// Tests: tests/base/envvartest.cpp.
class VN_BASE_EXPORT EnvIntVar : public EnvVar
{
public:
    EnvIntVar(char const* name, int defaultValue);

    void refresh() override;
    std::ostream& dump(std::ostream& stream) const override;

    int getValue() const { return _intValue; }

private:
    void compute();

    int _intValue;
    int _intDefault;
};

/// A number. Text that isn't one is 0.
/// Tests: tests/base/envvartest.cpp.
class VN_BASE_EXPORT EnvDoubleVar : public EnvVar
{
public:
    EnvDoubleVar(char const* name, double defaultValue);

    void refresh() override;
    std::ostream& dump(std::ostream& stream) const override;

    double getValue() const { return _doubleValue; }

private:
    void compute();

    double _doubleValue;
    double _doubleDefault;
};

VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, EnvVar const& variable);

/// A line end and a variable for each, so none at the end.
VN_BASE_EXPORT std::ostream& operator<<(std::ostream& stream, EnvVarRegistry const& registry);

}  // namespace Vn
