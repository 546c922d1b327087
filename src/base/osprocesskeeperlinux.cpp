// osprocesskeeperlinux.cpp: osprocesslinux.cpp where the system lacks what a start without copies takes.
//
// A program is started through two copies of this process:
//
//     this process  --fork-->  the one between  --fork-->  the keeper  --fork-->  the new one, which becomes the program
//
// The one between ends at once, so the keeper is an orphan and leaves no zombie. The keeper stays until the program
// has ended, holding nothing of ours but its end of a socket; that the socket hangs up is how we learn of the end. Where
// our children live in another PID namespace the first of them must not end before the others, so the one between is
// then the keeper. The new process tells the keeper by a pipe why it can't become the program; the system closes that
// when it does.
//
// A start costs three copies of our page tables, and each keeper holds the memory that we change after it.
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

/// What the processes that take part in a start say to each other.
struct Message
{
    enum Kind
    {
        isReady,  ///< from the keeper: it is there and waits for `go`; `value` is true if it is the first copy
        go,       ///< to the keeper, when the one between is gone
        failed,   ///< `value` is the errno
        isRunning
    };

    Kind kind;
    int value = 0;
    ::pid_t keeper = 0;  ///< with the last two: the keeper's number if it has become our own child
};

bool send(int channel, Message const& message)
{
    return Posix::retry([&] { return ::send(channel, &message, sizeof message, MSG_NOSIGNAL); }) == sizeof message;
}

/// False at the channel's end.
bool receive(int channel, Message& message)
{
    return Posix::retry([&] { return ::recv(channel, &message, sizeof message, 0); }) == sizeof message;
}

// --- in the copies of the process ------------------------------------------------------------------------------------

struct Launch
{
    Program program;
    SignalsBlocked signals;
    ::pid_t starter;  ///< the process that the program is started for
    Descriptor ours, theirs;
};

[[noreturn]] void becomeProgram(Launch& launch, int answer)
{
    const int error = launch.program.become(launch.signals.getBefore());
    Posix::retry([&] { return ::write(answer, &error, sizeof error); });
    leave(127);
}

/// The new process; -1 with `errno` set if it couldn't become the program.
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
    question.reset();
    int error = 0;
    if (Posix::retry([&] { return ::read(answer.get(), &error, sizeof error); }) != sizeof error)
        return child;
    Posix::retry([&] { return ::waitpid(child, nullptr, 0); });
    errno = error;
    return -1;
}

/// Lets go of all that is ours but the channel, which is descriptor 0 from then on.
void keepOnly(int channel)
{
    ::dup2(channel, 0);
    closeFrom(1, Closing::now);
    if (::chdir("/") != 0) {  // it only hinders whoever wants to unmount the folder
    }
}

[[noreturn]] void beKeeper(Launch& launch, bool isFirst)
{
    const int channel = launch.theirs.get();
    Message message{Message::isReady, isFirst};
    if (!send(channel, message) || !receive(channel, message) || message.kind != Message::go)
        leave(127);              // whoever started this is gone, or has given it up
    ::signal(SIGCHLD, SIG_DFL);  // where children are ignored, none can be waited for
    const ::pid_t program = forkProgram(launch);
    const int error = errno;
    const ::pid_t own = ::getppid() == launch.starter ? ::getpid() : 0;
    if (program == -1) {
        send(channel, {Message::failed, error, own});
        leave(127);
    }
    keepOnly(channel);
    if (!send(0, {Message::isRunning, 0, own}))
        leave(127);  // nobody would ever wait for the keeper
    Posix::retry([&] { return ::waitpid(program, nullptr, 0); });
    leave(0);
}

[[noreturn]] void beBetween(Launch& launch)
{
    launch.ours.reset();
    if (::getppid() == 0)  // we have no number in this process's PID namespace
        beKeeper(launch, true);
    const ::pid_t keeper = ::fork();
    if (keeper == 0)
        beKeeper(launch, false);
    if (keeper == -1)
        send(launch.theirs.get(), {Message::failed, errno});
    leave(0);
}

// --- in this process -------------------------------------------------------------------------------------------------

void collect(::pid_t& child)
{
    if (child != 0)
        Posix::retry([&] { return ::waitpid(child, nullptr, 0); });
    child = 0;
}

/// The last message of those who start the program; `first` becomes 0 when that is collected.
Message followStart(int channel, ::pid_t& first)
{
    constexpr Message ended{Message::failed, ECHILD};  // by somebody from outside
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

bool startWithKeeper(char const* const* argv, Started& started)
{
    Launch launch{Program(argv), {}, ::getpid(), Descriptor(), Descriptor()};
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return false;
    launch.ours.reset(ends[0]);
    launch.theirs.reset(ends[1]);
    ::pid_t first = ::fork();
    if (first == 0)
        beBetween(launch);
    if (first == -1)
        return false;
    launch.theirs.reset();
    Message last = followStart(launch.ours.get(), first);
    if (last.kind == Message::isRunning) {
        started.keeper = first != 0 ? first : last.keeper;
        started.end.reset(launch.ours.release());
        return true;
    }
    launch.ours.reset();  // ends a keeper that waits
    collect(first);
    collect(last.keeper);
    return fail(last.value);
}

}  // namespace Vn::ProcessStart
