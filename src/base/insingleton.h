#pragma once

#include <base/insingletonex.h>

namespace Vn
{

/// A singleton that lives exactly from its package's start to its stop.
///
///     void InInit<VnInit::palette>::performInitialize() { InSingleton<Palette>::initialize(new Palette); }
///     void InInit<VnInit::palette>::performFinalize() { InSingleton<Palette>::finalize(); }
///     Palette& Palette::getInstance() { return InSingleton<Palette>::getInstance(); }
///
/// Use outside that span throws an InSingletonEx that names this class, so a wrong order shows as an exception and
/// never as a half-built object. A destroyed singleton can't be made again. initialize() and finalize() belong to the
/// thread that drives the start; getInstance() takes no lock.
/// Tests: tests/base/insingletontest.cpp.
template <class T>
class InSingleton
{
public:
    /// Takes ownership of `instance`, which may be null. On ExAlreadyInitialized and ExAlreadyDestroyed it stays the
    /// caller's.
    static void initialize(T* instance);

    /// Deletes the instance. Throws ExNotInitialized, or ExAlreadyDestroyed at the second call.
    static void finalize();

    /// Throws ExNotInitialized before initialize() and after finalize().
    static T& getInstance();

private:
    enum State
    {
        NotInitialized = 0,
        Initialized = 1,
        Destroyed = 2
    };

    static State _state;
    static T* _instance;  ///< null except in the state Initialized
};

}  // namespace Vn

#include <base/insingleton.imp>
