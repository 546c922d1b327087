// osprocesskeeperlinux.cpp: the fallback of osprocesslinux.cpp, for systems without pidfds (before Linux 5.4).
//
// A start forks three times:
//
//     this process  --fork-->  intermediate  --fork-->  keeper  --fork-->  new process, which runs the program
//
//     1. The intermediate process exits at once. The keeper is then an orphan and leaves no zombie.
//     2. The keeper reports by a socket that it is ready, and waits for our answer.
//     3. The new process runs the program. If that fails, it sends `errno` to the keeper through a pipe; if it
//        succeeds, the system closes the pipe (O_CLOEXEC).
//     4. The keeper reports the result. It closes everything else, keeps its end of the socket open, and exits
//        when the program has ended. The socket then hangs up, and so we learn of the end.
//
// Where our children live in another PID namespace, all processes there die with the first one. There the
// intermediate process must not exit, and is the keeper itself.
//
// Costs: each fork copies our page tables, and a keeper holds on to memory that we change afterwards.
#include <base/osprocesslinux_p.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Vn::ProcessStart
{
namespace
{
using Posix::Descriptor;

/// What the processes of a start send to each other.
struct Message
{
    enum Kind
    {
        isReady,  ///< from the keeper: it waits for `go`; `value` is 1 if it is the intermediate process itself
        go,       ///< to the keeper, when the intermediate process is gone
        failed,   ///< `value` is the errno
        isRunning
    };

    Kind kind;
    int value = 0;
    ::pid_t keeper = 0;  ///< with the last two: the keeper's process number if it is our own child
};

bool send(int channel, Message const& message)
{
    return Posix::retry([&] { return ::send(channel, &message, sizeof message, MSG_NOSIGNAL); }) == sizeof message;
}

/// False if the other end has been closed.
bool receive(int channel, Message& message)
{
    return Posix::retry([&] { return ::recv(channel, &message, sizeof message, 0); }) == sizeof message;
}

// --- in the forked processes ---------------------------------------------------------------------------------------

struct Launch
{
    Program program;
    SignalsBlocked signals;
    ::pid_t starter;  ///< this process, as the forked ones know it
    Descriptor ours, theirs;
};

[[noreturn]] void becomeProgram(Launch& launch, int answer)
{
    const int error = launch.program.become(launch.signals.getBefore());
    Posix::retry([&] { return ::write(answer, &error, sizeof error); });
    leave(127);
}

/// The process number of the new process, which runs the program; -1 with `errno` set if it can't.
::pid_t forkProgram(Launch& launch)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    Descriptor answer(ends[0]), question(ends[1]);
    const ::pid_t child = ::fork();
    if (child == 0)
        becomeProgram(launch, question.get());
    if (child == -1)
        return -1;
    // Ours must go first: as long as we hold a writing end, the reading below would never end.
    question.reset();
    int error = 0;
    if (Posix::retry([&] { return ::read(answer.get(), &error, sizeof error); }) != sizeof error)
        return child;
    Posix::retry([&] { return ::waitpid(child, nullptr, 0); });
    errno = error;
    return -1;
}

/// Closes every descriptor but the channel, which becomes descriptor 0.
void keepOnly(int channel)
{
    ::dup2(channel, 0);
    closeFrom(1, Closing::now);
    if (::chdir("/") != 0) {  // not needed for the keeper's work: staying only keeps the directory's device mounted
    }
}

[[noreturn]] void beKeeper(Launch& launch, bool isFirst)
{
    const int channel = launch.theirs.get();
    Message message{Message::isReady, isFirst};
    if (!send(channel, message) || !receive(channel, message) || message.kind != Message::go)
        leave(127);              // the starting process is gone or has given up the start
    ::signal(SIGCHLD, SIG_DFL);  // with SIG_IGN the system would collect the program before waitpid()
    const ::pid_t program = forkProgram(launch);
    const int error = errno;
    const ::pid_t own = ::getppid() == launch.starter ? ::getpid() : 0;
    if (program == -1) {
        send(channel, {Message::failed, error, own});
        leave(127);
    }
    keepOnly(channel);
    if (!send(0, {Message::isRunning, 0, own}))
        leave(127);  // the starting process is gone
    Posix::retry([&] { return ::waitpid(program, nullptr, 0); });
    leave(0);
}

[[noreturn]] void beIntermediate(Launch& launch)
{
    launch.ours.reset();
    if (::getppid() == 0)  // our parent is in another PID namespace
        beKeeper(launch, true);
    const ::pid_t keeper = ::fork();
    if (keeper == 0)
        beKeeper(launch, false);
    if (keeper == -1)
        send(launch.theirs.get(), {Message::failed, errno});
    leave(0);
}

// --- in this process -----------------------------------------------------------------------------------------------

/// Waits for a child of ours that ends by itself, and forgets its number. 0 for none.
void collect(::pid_t& child)
{
    if (child != 0)
        Posix::retry([&] { return ::waitpid(child, nullptr, 0); });
    child = 0;
}

/// The last message of the start, `failed` or `isRunning`. `first` becomes 0 when that process has been collected.
Message followStart(int channel, ::pid_t& first)
{
    constexpr Message ended{Message::failed, ECHILD};  // a process of the start was killed
    Message message;
    if (!receive(channel, message))
        return ended;
    if (message.kind != Message::isReady)
        return message;
    if (message.value == 0)
        collect(first);
    return send(channel, {Message::go}) && receive(channel, message) ? message : ended;
}
}  // namespace

bool startWithKeeper(char const* const* argv, ChildRecord& child)
{
    Launch launch{Program(argv), {}, ::getpid(), Descriptor(), Descriptor()};
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return false;
    launch.ours.reset(Posix::liftAboveStandard(ends[0]));
    launch.theirs.reset(Posix::liftAboveStandard(ends[1]));
    if (!launch.ours.isOpen() || !launch.theirs.isOpen())
        return false;
    ::pid_t first = ::fork();
    if (first == 0)
        beIntermediate(launch);
    if (first == -1)
        return false;
    launch.theirs.reset();
    Message last = followStart(launch.ours.get(), first);
    if (last.kind == Message::isRunning) {
        child.keeper = first != 0 ? first : last.keeper;
        child.end.reset(launch.ours.release());
        return true;
    }
    launch.ours.reset();  // a keeper that still waits sees the end of the socket and exits
    collect(first);
    collect(last.keeper);
    return fail(last.value);
}

}  // namespace Vn::ProcessStart
