#pragma once

#include <base/baseexport.h>
#include <base/vector.h>

#include <cstddef>
#include <typeinfo>

namespace Vn
{

class InVariableBase;

template <class Tag>
class InInit;

/// What a variable needs of the package that owns it.
class VN_BASE_EXPORT InPackageInitBase
{
public:
    virtual ~InPackageInitBase();
    virtual void addDependency(InVariableBase* variable) = 0;
    virtual void removeDependency(InVariableBase* variable) = 0;
};

/// A package: a static object with a name, the packages that must start before it, its variables, and two hooks.
/// InInit<Tag> derives from it; ininit.h shows how to declare one.
///
/// Packages are the same if they have the same type, whatever their names and addresses. The manager doesn't own
/// them; one that is destroyed leaves the manager's lists, so a library may be unloaded. Belongs to the thread that
/// drives the start.
/// Tests: tests/base/ininitmgrtest.cpp, tests/base/inpackagestest.cpp.
class VN_BASE_EXPORT InPackageInit : public InPackageInitBase
{
public:
    /// `name` is cut to 127 characters; null counts as empty.
    explicit InPackageInit(char const* name);
    InPackageInit(InPackageInit const&) = delete;
    InPackageInit& operator=(InPackageInit const&) = delete;

    ~InPackageInit() override;

    /// Takes a variable in, behind those already there. Its constructor calls this, and its destructor the other.
    void addDependency(InVariableBase* variable) override;
    void removeDependency(InVariableBase* variable) override;

    virtual char const* getName() const;

    /// The hooks: what the package does at its start and at its stop. An exception from the first stops the start.
    virtual void performInitialize();
    virtual void performFinalize();

    /// Called with true after a successful start, and with false before the stop.
    virtual void setInitialized(bool initialized);

    /// The packages that must start first, as types of their InInit<Tag>. Those that ran already when they were
    /// added are not among them.
    Vector<std::type_info const*> const& getDependencies() const;

    /// Initialises the variables in order, then calls the hook. For the manager.
    void initialize();

    /// Calls the hook, then finalises the variables from last to first. For the manager.
    void finalize();

protected:
    /// Hands this package to the manager. Throws InEx::ExReinitWithoutGuard after the start, unless an InReinitGuard
    /// lives. Call it from the constructor of the final class: the type that counts is the one that it has there.
    void registerPackage();

    /// Makes `type` a package that must start first, unless it runs already. Throws ExInternalError for null.
    void addDependency(std::type_info const* type);

    /// addDependency() for the package of each tag, in order.
    template <class... Tags>
    void addDependencies()
    {
        (addDependency(InInit<Tags>::getType()), ...);
    }

private:
    friend class InInitMgr;

    static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

    std::size_t placeOf(InVariableBase const* variable) const;

    char _name[128];
    Vector<std::type_info const*> _dependencies;
    Vector<InVariableBase*> _variables;  ///< in registration order; not owned; null where one has gone

    // That no departure costs a walk through all the others.
    std::size_t _holes = 0;   ///< nulls among the variables
    bool _isWalking = false;  ///< through the variables, which keep their places meanwhile
    bool _doVariablesKnow =
        true;  ///< each its place; not once one that is another package's, or listed already, was added
    std::size_t _listed = 0;         ///< entries of the manager's lists that are this package's
    std::size_t _batchAt = nowhere;  ///< where in the manager's waiting or present batch it was last put
    std::size_t _savedAt = nowhere;  ///< the same among the packages taken up
};

}  // namespace Vn
