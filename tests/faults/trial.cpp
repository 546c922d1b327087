// Trials of acts, each in a forked process of its own.
//
// The parent has one thread and prepares nothing, so a fork is cheap and each trial begins alike: the allocations and the
// calls of an act come in the same order each time. Threads begin and end within the trial. What the trial finds out goes
// into shared memory, and is there as well when the process is ended by a signal. A trial that hangs is ended by an alarm.
#include "trial.h"

#include <base/exbase.h>
#include <base/exsyserror.h>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

using namespace Vn;

namespace VnTest
{
namespace
{
/// A hang is a failure, and a slow machine is none.
constexpr unsigned hangSeconds = 120;

Findings* shared = nullptr;

template <std::size_t size>
void copyText(char (&target)[size], char const* source)
{
    std::snprintf(target, size, "%s", source);
}

void takeDown(ExBase const* ours, std::exception const* standard, Findings& findings)
{
    findings.ending = Ending::otherError;
    copyText(findings.text, ours != nullptr ? ours->getReason() : standard->what());
    if (ours != nullptr)
        copyText(findings.source, ours->getFileName());
    if (auto const* const windows = dynamic_cast<ExSysErrorWindows const*>(ours)) {
        findings.ending = Ending::systemError;
        findings.error = windows->getErrorCode();
    } else if (auto const* const ansi = dynamic_cast<ExSysErrorANSI const*>(ours)) {
        findings.ending = Ending::systemError;
        findings.error = ansi->getError();
    } else if (auto const* const system = dynamic_cast<std::system_error const*>(standard)) {
        findings.ending = Ending::systemError;
        findings.error = system->code().value();
    }
}

/// Runs it, and notes how that ends.
void runOnce(Act& act, Findings& findings)
{
    try {
        act.run();
        findings.ending = Ending::returned;
    } catch (std::bad_alloc const&) {
        findings.ending = Ending::outOfMemory;
    } catch (ExBase const& failure) {
        takeDown(&failure, dynamic_cast<std::exception const*>(&failure), findings);
    } catch (std::exception const& failure) {
        takeDown(nullptr, &failure, findings);
    } catch (...) {
        findings.ending = Ending::unknownThrown;
    }
}

void addNote(char const* text)
{
    const std::size_t used = std::strlen(shared->place);
    std::snprintf(shared->place + used, sizeof shared->place - used, "%s", text);
}

/// Adds the calls of this thread to the notes. Without memory, which may be what has failed.
void notePlace(char const* title)
{
    void* calls[40];
    const int count = ::backtrace(calls, 40);
    addNote(title);
    addNote("\n");
    for (int i = 2; i < count; ++i) {
        ::Dl_info object = {};
        if (::dladdr(calls[i], &object) == 0 || object.dli_fname == nullptr)
            continue;
        char const* const slash = std::strrchr(object.dli_fname, '/');
        char line[400];
        std::snprintf(
            line, sizeof line, "  %s+0x%lx %s\n", slash != nullptr ? slash + 1 : object.dli_fname,
            static_cast<unsigned long>(static_cast<char*>(calls[i]) - static_cast<char*>(object.dli_fbase)),
            object.dli_sname != nullptr ? object.dli_sname : "");
        addNote(line);
    }
}

/// The signal goes on to the default action.
void onEnd(int signal)
{
    notePlace("ended by a signal at");
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

void addFault(Findings& findings, std::string const& fault)
{
    if (!fault.empty() && findings.fault[0] == '\0')
        copyText(findings.fault, fault.c_str());
}

/// The body of a trial's process.
void perform(NamedAct const& named, Plan const& plan, int again, Findings& findings)
{
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    ::close(nowhere);
    void* loaded[1];
    ::backtrace(loaded, 1);  // loads what it needs
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS})
        std::signal(signal, onEnd);
    ::alarm(hangSeconds);
    if (plan.prepare && !plan.prepare()) {
        findings.isSkipped = true;
        findings.error = errno;
        return;
    }
    copyText(findings.step, "prepare");
    const int descriptors = countOpenDescriptors();
    {
        std::unique_ptr<Act> act = named.make();
        act->prepare();
        copyText(findings.step, "run");
        plan.start();
        runOnce(*act, findings);
        findings.hits = plan.stop();
        copyText(findings.step, "look");
        addFault(findings, act->findFault(findings.ending != Ending::returned));
        copyText(findings.step, "recover");
        act->recover();
        for (int i = 0; i < again && act->canBeRepeated(); ++i) {
            copyText(findings.step, "run again");
            static Findings second;
            second = {};
            runOnce(*act, second);
            if (second.ending != Ending::returned)
                addFault(findings, std::string("fails again though all works: ") + second.text);
            addFault(findings, act->findFault(second.ending != Ending::returned));
            act->recover();
        }
        copyText(findings.step, "end");
    }
    findings.descriptors = countOpenDescriptors() - descriptors;
    if (plan.finish)
        plan.finish(findings);
    copyText(findings.step, "done");
}
}  // namespace

void noteFailure()
{
    notePlace("failed at");
}

void TrialFolder::SetUp()
{
    char path[] = "/dev/shm/vntrialsXXXXXX";
    if (::mkdtemp(path) == nullptr)
        return;
    _path = path;
    ::setenv("TMPDIR", path, 1);
}

void TrialFolder::TearDown()
{
    if (!_path.empty())
        std::filesystem::remove_all(_path);
}

int countOpenDescriptors()
{
    int count = 0;
    for (int number = 0; number < 256; ++number)
        count += ::fcntl(number, F_GETFD) != -1;
    return count;
}

Findings tryAct(NamedAct const& act, Plan const& plan, int again)
{
    if (shared == nullptr)
        shared = static_cast<Findings*>(
            ::mmap(nullptr, sizeof(Findings), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    if (shared == MAP_FAILED)
        throw std::runtime_error("no memory to share with the process of a trial");
    std::memset(static_cast<void*>(shared), 0, sizeof *shared);
    const ::pid_t child = ::fork();
    if (child == -1)
        throw std::runtime_error("no process for a trial");
    if (child == 0) {
        perform(act, plan, again, *shared);
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) == -1 && errno == EINTR)
        continue;
    if (WIFSIGNALED(status))
        shared->signal = WTERMSIG(status);
    return *shared;
}

std::string describeEnd(Findings const& findings)
{
    if (findings.signal == SIGALRM)
        return std::string("hangs in the step '") + findings.step + "'";
    if (findings.signal != 0)
        return "ended by signal " + std::to_string(findings.signal) + " in the step '" + findings.step + "'";
    if (std::strcmp(findings.step, "done") != 0)
        return std::string("ended in the step '") + findings.step + "'";
    if (findings.ending == Ending::unknownThrown)
        return "threw what is no exception of the library or the standard";
    return findings.fault;
}

}  // namespace VnTest
