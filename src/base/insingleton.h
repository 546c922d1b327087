#pragma once

#include <base/insingletonex.h>

namespace Vn
{

/// A singleton that exists exactly from its package's start to its stop.
///
///     void InInit<VnInit::palette>::performInitialize() { InSingleton<Palette>::initialize(new Palette); }
///     void InInit<VnInit::palette>::performFinalize() { InSingleton<Palette>::finalize(); }
///     Palette& Palette::getInstance() { return InSingleton<Palette>::getInstance(); }
///
/// Use outside that span throws an InSingletonEx that names this class, so a wrong start order shows as an exception
/// and never as a half-built object. A destroyed singleton can't be made again. initialize() and finalize() belong to
/// the thread that drives the start. getInstance() takes no lock: other threads may call it while the package runs.
/// Tests: tests/base/insingletontest.cpp.
template <class T>
class InSingleton
{
public:
    /// Takes ownership of `instance`, which may be null.
    ///
    ///     first call        ->  getInstance() returns *instance
    ///     second call       ->  throws InSingletonEx::ExAlreadyInitialized; `instance` stays the caller's
    ///     after finalize()  ->  throws InSingletonEx::ExAlreadyDestroyed; `instance` stays the caller's
    static void initialize(T* instance);

    /// Deletes the instance. Throws InSingletonEx::ExNotInitialized before initialize(), and ExAlreadyDestroyed at
    /// the second call.
    static void finalize();

    /// The instance. Throws InSingletonEx::ExNotInitialized before initialize() and, in the same words, after
    /// finalize(); ExInternalError ("_instance != 0") if the singleton was made of null.
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
