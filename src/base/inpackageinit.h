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

/// What a variable sees of the package that owns it. Implemented by InPackageInit; tests put their own in its place.
/// Tests: tests/base/invariabletest.cpp.
class VN_BASE_EXPORT InPackageInitBase
{
public:
    /// Nothing to destroy here.
    virtual ~InPackageInitBase();

    /// Called by the variable's constructor. `variable` isn't complete yet: keep its address, call nothing.
    virtual void addDependency(InVariableBase* variable) = 0;

    /// Called by the variable's destructor, and by its constructor after a failure.
    virtual void removeDependency(InVariableBase* variable) = 0;
};

/// A package: a static object with a name, the packages that must start before it, its variables, and two hooks.
/// InInit<Tag> derives from it; ininit.h shows how to declare one.
///
///     void Vn::InInit<VnInit::palette>::performInitialize()
///     {
///         Vn::InSingleton<Palette>::initialize(new Palette);
///     }
///
/// Packages are the same if they have the same type, whatever their names and addresses. The manager doesn't own
/// them. One that is destroyed leaves the manager's lists, so a library may be unloaded; its stop hook does not run
/// then. Belongs to the thread that drives the start.
/// Tests: tests/base/ininitmgrtest.cpp, tests/base/inpackagestest.cpp.
class VN_BASE_EXPORT InPackageInit : public InPackageInitBase
{
public:
    /// Copies `name`, cut to its first 127 characters; null counts as empty. Doesn't register: see registerPackage().
    explicit InPackageInit(char const* name);
    InPackageInit(InPackageInit const&) = delete;
    InPackageInit& operator=(InPackageInit const&) = delete;

    /// Leaves the manager's lists, without a call of the stop hook.
    ~InPackageInit() override;

    /// Appends a variable. Throws ExInternalError ("variable != 0") for null.
    void addDependency(InVariableBase* variable) override;

    /// Removes the first entry equal to `variable`; one that isn't there is no error.
    void removeDependency(InVariableBase* variable) override;

    /// The name, at most 127 characters, never null. It decides the order among packages with equally many
    /// dependencies.
    virtual char const* getName() const;

    /// @{
    /// The hooks: what the package does at its start and at its stop. Nothing, unless overridden.
    ///
    /// Every dependency runs when performInitialize() is called, and still runs when performFinalize() is. An
    /// exception from either stops the loop and reaches the caller of InInitMgr::initialize() or finalize().
    virtual void performInitialize();
    virtual void performFinalize();
    /// @}

    /// Called with true after performInitialize() has returned, and with false before performFinalize() begins.
    virtual void setInitialized(bool initialized);

    /// The packages that must start first, as types of their InInit<Tag>, in the order added and with repetitions.
    /// Packages that ran already when they were added are not among them.
    Vector<std::type_info const*> const& getDependencies() const;

    /// Initialises the variables in order, then calls performInitialize(), then setInitialized(true). For the
    /// manager.
    void initialize();

    /// Calls setInitialized(false), then performFinalize(), then finalises the variables from last to first. For the
    /// manager.
    void finalize();

protected:
    /// Hands this package to the manager. Call it from the constructor of the final class: the type that the object
    /// has at that moment is the one that counts.
    ///
    ///     before the start               ->  waits for it
    ///     after it, in an InReinitGuard  ->  waits for the end of the last guard
    ///     after it, without a guard      ->  throws InEx::ExReinitWithoutGuard
    ///     its type runs already          ->  nothing happens
    void registerPackage();

    /// Makes `type` a package that must start first, unless it runs already. Throws ExInternalError ("type != 0") for
    /// null.
    void addDependency(std::type_info const* type);

    /// Calls addDependency() for the package of each tag, in order.
    template <class... Tags>
    void addDependencies()
    {
        (addDependency(InInit<Tags>::getType()), ...);
    }

private:
    friend class InInitMgr;

    std::size_t placeOf(InVariableBase const* variable) const;

    char _name[128];
    Vector<std::type_info const*> _dependencies;
    Vector<InVariableBase*> _variables;  ///< in registration order; not owned; null where one has gone
};

}  // namespace Vn
