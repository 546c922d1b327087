#pragma once

#include <base/arrayptr.h>
#include <base/exbase.h>

#include <stdexcept>

namespace Vn
{

/// Base of the exceptions of start, stop and settings; to catch all of them at once:
///
///     try {
///         manager.initialize(argc, argv);
///     } catch (Vn::InEx const& failure) {
///         std::cerr << failure.getReason() << "\n";    // "Init Package not registered: 'N6VnInit5audioE'."
///     }
///
/// Each class below is a standard exception as well (`std::logic_error` for errors in the program's text,
/// `std::runtime_error` for the others), so `what()` has the same message. A name in a message is cut to 256
/// characters; a null name counts as empty.
///
/// Constructors copy their texts, except `file`, which must be a string literal or live as long as the exception.
/// An exception belongs to one thread at a time.
/// Tests: tests/base/inextest.cpp.
class VN_BASE_EXPORT InEx : public ExBase
{
public:
    class ExPackageNotRegistered;
    class ExDependencyCycle;
    class ExPackageInitError;
    class ExRegAfterInit;
    class ExReinitWithoutGuard;
    class ExDoubleInit;
    class ExFinaliseBeforeInit;
    class ExDoubleFinalise;
    class ExHandleAlreadyInUse;
    class ExUninitializedObject;
    class ExInvalidObject;
    class ExContextAliasAlreadyDefined;
    class ExVariableAlreadyInitialized;
    class ExNoNewContextAliasAfterInit;

protected:
    /// For the classes below: `file` and `line` say where the throw stands, as "src/base/ininitmgr" and its line.
    InEx(char const* file, int line);
};

/// A package depends on a package that nobody registered: its library isn't loaded, or its object doesn't exist.
///
/// The reason has the run-time type name; getPackageTag() has the name for people. Thrown by InInitMgr::initialize()
/// before any package of the batch has started.
class VN_BASE_EXPORT InEx::ExPackageNotRegistered : public std::runtime_error, public InEx
{
public:
    /// `package` is the run-time type name of the missing InInit<Tag>, as the compiler spells it.
    ///
    ///     "Init Package not registered: 'N2Vn6InInitIN6VnInit5audioEEE'."
    ExPackageNotRegistered(char const* file, int line, char const* package);

    /// The missing package as sources write its tag, for a program's message: "VnInit::palette". A type that is no
    /// InInit<Tag> has its own name; what is no run-time type name, or one of over 256 characters, stays as the
    /// reason has it.
    ArrayPtrRet<char> getPackageTag() const;

    VN_EX_MEMBERS();
};

/// Packages depend on each other in a cycle. InInitMgr::reportCycles() tells which ones.
///
/// Thrown by InInitMgr::initialize() before any package of the batch has started.
class VN_BASE_EXPORT InEx::ExDependencyCycle : public std::logic_error, public InEx
{
public:
    /// The message is "Init dependencies contain cycle(s)".
    ExDependencyCycle(char const* file, int line);

    VN_EX_MEMBERS();
};

/// For a package that refuses to start: its performInitialize() throws this. The library itself never does.
///
///     if (!device.isPresent())
///         throw Vn::InEx::ExPackageInitError("src/audio/audiopackage", __LINE__, getName());
///
/// The packages started before it keep running until InInitMgr::finalize() stops them.
class VN_BASE_EXPORT InEx::ExPackageInitError : public std::runtime_error, public InEx
{
public:
    /// The message is "Init error in package: 'audio'." for the `package` "audio".
    ExPackageInitError(char const* file, int line, char const* package);

    VN_EX_MEMBERS();
};

/// For clients that forbid packages after the start altogether. The library itself never throws it.
class VN_BASE_EXPORT InEx::ExRegAfterInit : public std::runtime_error, public InEx
{
public:
    /// The message is "Package registered after initialize().".
    ExRegAfterInit(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A package was registered after the start while no InReinitGuard existed.
///
/// Thrown by the package's constructor, so a library that is loaded without a guard fails to load.
class VN_BASE_EXPORT InEx::ExReinitWithoutGuard : public std::runtime_error, public InEx
{
public:
    /// The message is "Reinitialize without using the reinitialize guard.".
    ExReinitWithoutGuard(char const* file, int line);

    VN_EX_MEMBERS();
};

/// For clients that forbid a second start. The library itself never throws it: InInitMgr::initialize() may be
/// called again.
class VN_BASE_EXPORT InEx::ExDoubleInit : public std::runtime_error, public InEx
{
public:
    /// The message is "Multiple calls to initialize().".
    ExDoubleInit(char const* file, int line);

    VN_EX_MEMBERS();
};

/// InInitMgr::finalize() was called before the start. Pending overrides and arguments are cleared all the same.
class VN_BASE_EXPORT InEx::ExFinaliseBeforeInit : public std::runtime_error, public InEx
{
public:
    /// The message is "Call to finalize() before initialize().".
    ExFinaliseBeforeInit(char const* file, int line);

    VN_EX_MEMBERS();
};

/// InInitMgr::finalize() was called again after it had ended, or from a hook while it was at work.
class VN_BASE_EXPORT InEx::ExDoubleFinalise : public std::runtime_error, public InEx
{
public:
    /// The message is "Multiple calls to finalize().".
    ExDoubleFinalise(char const* file, int line);

    VN_EX_MEMBERS();
};

/// A second InVariable was made with a handle that a living one has. Thrown by its constructor.
class VN_BASE_EXPORT InEx::ExHandleAlreadyInUse : public std::runtime_error, public InEx
{
public:
    /// The message is "Trying to register an object with an already used handle: 'palette.depth'.".
    ExHandleAlreadyInUse(char const* file, int line, char const* handle);

    VN_EX_MEMBERS();
};

/// A variable or an alias was read before its start, after its stop, or (a variable) although no source has a value.
class VN_BASE_EXPORT InEx::ExUninitializedObject : public std::logic_error, public InEx
{
public:
    /// `name` is a variable's handle or an alias's description.
    ///
    ///     "Trying to access an object that is not fully initialized: 'palette.depth'."
    ExUninitializedObject(char const* file, int line, char const* name);

    VN_EX_MEMBERS();
};

/// An alias was read whose source has no value: an environment variable that is unset, or an option not given.
class VN_BASE_EXPORT InEx::ExInvalidObject : public std::logic_error, public InEx
{
public:
    /// The message is "Trying to access an object that has an invalid value: 'the same in the environment'.".
    ExInvalidObject(char const* file, int line, char const* description);

    VN_EX_MEMBERS();
};

/// An option or an environment variable was declared twice. Share one declaration among variables instead.
class VN_BASE_EXPORT InEx::ExContextAliasAlreadyDefined : public std::logic_error, public InEx
{
public:
    /// The message is "Trying to re-create an already existing Context Alias: 'PALETTE_DEPTH'.".
    ExContextAliasAlreadyDefined(char const* file, int line, char const* key);

    VN_EX_MEMBERS();
};

/// InVariableBase::overrideViaHandle() was called for a variable whose package runs.
class VN_BASE_EXPORT InEx::ExVariableAlreadyInitialized : public std::logic_error, public InEx
{
public:
    /// The message is "Trying to override an InVariable that is already initialized: 'palette.depth'.".
    ExVariableAlreadyInitialized(char const* file, int line, char const* handle);

    VN_EX_MEMBERS();
};

/// An alias was made, or a variable cloned one, after the aliases of its kind had been given their values.
class VN_BASE_EXPORT InEx::ExNoNewContextAliasAfterInit : public std::logic_error, public InEx
{
public:
    /// Both texts stand in the message, each cut to 256 characters:
    ///
    ///     "Trying to do post initialization registration of context alias instance: 'default' (key: 3)."
    ExNoNewContextAliasAfterInit(char const* file, int line, char const* description, char const* key);

    VN_EX_MEMBERS();
};

}  // namespace Vn
