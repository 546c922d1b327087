// Makes system calls fail where they are made: also those that the C library makes within its own functions.
//
// A filter of the kernel (seccomp) turns each call that comes from the code of the C library or the loader into a signal. The
// handler of the signal counts the call, and either gives it a result or lets it be made. To make it, the thread goes on in a
// copy of the instruction that the filter doesn't look at, which jumps back behind the original: all registers and the stack
// are as they were, so this works for clone() and vfork() as for any other call. There is one copy for each place.
//
// What would break this is kept away: a thread may not block the signal (rt_sigprocmask), nor may its handler be replaced
// (rt_sigaction). The kernel keeps the filter for programs that the trial starts, which have no handler: they must have no code
// where this program's libraries are (endsatonce.cpp).
//
// The state is in memory that is shared with all processes of a trial and the one that looks at it behind it.
#include "failingcalls.h"

#include <link.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#if defined(__x86_64__)
#    include <linux/audit.h>
#    include <linux/filter.h>
#    include <linux/seccomp.h>
#    include <ucontext.h>
#endif

#if defined(__x86_64__)
namespace
{
using VnTest::CallPlan;
using VnTest::Manner;

constexpr int most = 16;
constexpr int none = -1;  ///< of calls

/// How a call can fail. Left out are errors that tell of a mistake of the caller, as EFAULT, and those that would contradict what
/// the system says otherwise: no child where there is one, a name that exists where there is none. A listing that fails with
/// ENOENT has ended, as its directory was removed; the C library says so.
struct Kind
{
    int number;
    char const* name;
    bool isInterruptible;
    int sizeRegister;  ///< of the argument that says how much is to be moved; -1 for none
    int errors[most];  ///< 0 behind the last
};

constexpr Kind kinds[] = {
    {SYS_openat,
     "openat",
     true,
     -1,
     {EACCES, EMFILE, ENFILE, ENOENT, ENOMEM, ENOSPC, EROFS, EIO, ELOOP, ENOTDIR, EDQUOT, ENXIO, EPERM}},
    {SYS_read, "read", true, REG_RDX, {EIO, ENOMEM}},
    {SYS_pread64, "pread64", true, REG_RDX, {EIO, ENXIO}},
    {SYS_write, "write", true, REG_RDX, {EIO, ENOSPC, EDQUOT, EFBIG, EPERM, EPIPE}},
    {SYS_pwrite64, "pwrite64", true, REG_RDX, {EIO, ENOSPC, EDQUOT, EFBIG, EPERM}},
    {SYS_close, "close", true, -1, {EIO, ENOSPC, EDQUOT}},
    {SYS_newfstatat,
     "newfstatat",
     false,
     -1,
     {EACCES, ENOENT, ENOMEM, ELOOP, ENAMETOOLONG, ENOTDIR, EOVERFLOW, EIO}},
    {SYS_fstat, "fstat", false, -1, {EIO, ENOMEM, EOVERFLOW}},
    {SYS_stat, "stat", false, -1, {EACCES, ENOENT, ENOMEM, ELOOP, ENAMETOOLONG, ENOTDIR, EOVERFLOW, EIO}},
    {SYS_lstat, "lstat", false, -1, {EACCES, ENOENT, ENOMEM, ELOOP, ENAMETOOLONG, ENOTDIR, EOVERFLOW, EIO}},
    {SYS_access, "access", false, -1, {EACCES, EROFS, EIO, ENOMEM, ELOOP}},
    {SYS_faccessat, "faccessat", false, -1, {EACCES, EROFS, EIO, ENOMEM, ELOOP}},
    {SYS_faccessat2, "faccessat2", false, -1, {EACCES, EROFS, EIO, ENOMEM, ELOOP, ENOSYS}},
    {SYS_mkdir, "mkdir", false, -1, {EACCES, EDQUOT, EMLINK, ENOENT, ENOMEM, ENOSPC, EROFS, EPERM}},
    {SYS_rmdir, "rmdir", false, -1, {EACCES, EBUSY, ENOTEMPTY, EPERM, EROFS, ENOMEM}},
    {SYS_unlink, "unlink", false, -1, {EACCES, EBUSY, EIO, EPERM, EROFS, ENOMEM}},
    {SYS_rename, "rename", false, -1, {EACCES, EBUSY, EDQUOT, EIO, ENOSPC, EXDEV, EROFS, EPERM}},
    {SYS_renameat2,
     "renameat2",
     false,
     -1,
     {EACCES, EBUSY, EDQUOT, EIO, ENOSPC, EXDEV, EROFS, EPERM, EINVAL, ENOSYS}},
    {SYS_ftruncate, "ftruncate", true, -1, {EIO, EFBIG, EPERM}},
    {SYS_lseek, "lseek", false, -1, {ESPIPE, EOVERFLOW}},
    {SYS_flock, "flock", true, -1, {ENOLCK}},
    {SYS_fcntl, "fcntl", false, -1, {EMFILE, EPERM}},
    {SYS_getdents64, "getdents64", false, REG_RDX, {EIO}},
    {SYS_copy_file_range,
     "copy_file_range",
     true,
     REG_R8,
     {EIO, EXDEV, ENOSPC, EINVAL, ENOSYS, EOPNOTSUPP, EPERM, ENOMEM, EOVERFLOW, ETXTBSY}},
    {SYS_sendfile, "sendfile", true, REG_R10, {EIO, EAGAIN, EINVAL, ENOMEM}},
    {SYS_ioctl, "ioctl", false, -1, {EOPNOTSUPP, EXDEV, EINVAL, EPERM}},
    {SYS_readlink, "readlink", false, -1, {EACCES, EIO, EINVAL, ENOMEM}},
    {SYS_getcwd, "getcwd", false, -1, {ENOENT, ENOMEM}},
    {SYS_statfs, "statfs", true, -1, {EACCES, EIO, ENOSYS, EOVERFLOW, ENOMEM}},
    {SYS_clone, "clone", false, -1, {EAGAIN, ENOMEM, EPERM, ENOSYS}},
    {SYS_clone3, "clone3", false, -1, {EAGAIN, ENOMEM, EPERM, ENOSYS}},
    {SYS_execve, "execve", false, -1, {E2BIG, EACCES, ENOMEM, EIO, ETXTBSY, ENOENT}},
    {SYS_pipe2, "pipe2", false, -1, {EMFILE, ENFILE}},
    {SYS_socketpair, "socketpair", false, -1, {EMFILE, ENFILE, ENOMEM}},
    {SYS_socket, "socket", false, -1, {EMFILE, ENFILE, ENOMEM, EACCES}},
    {SYS_connect, "connect", true, -1, {ECONNREFUSED, EACCES}},
    {SYS_sendto, "sendto", true, -1, {ENOBUFS, ENOMEM}},
    {SYS_recvfrom, "recvfrom", true, -1, {ENOMEM}},
    {SYS_wait4, "wait4", true, -1, {}},
    {SYS_waitid, "waitid", true, -1, {}},
    {SYS_poll, "poll", true, -1, {ENOMEM}},
    {SYS_timerfd_create, "timerfd_create", false, -1, {EMFILE, ENFILE, ENODEV, ENOMEM}},
    {SYS_timerfd_settime, "timerfd_settime", false, -1, {EINVAL}},
    {SYS_clock_nanosleep, "clock_nanosleep", true, -1, {}},
    {SYS_close_range, "close_range", false, -1, {ENOSYS, EMFILE}},
    {SYS_unshare, "unshare", false, -1, {EPERM, ENOMEM}},
    {SYS_membarrier, "membarrier", false, -1, {ENOSYS, EINVAL, EPERM}},
    {SYS_sigaltstack, "sigaltstack", false, -1, {ENOMEM}},
    {SYS_mmap, "mmap", false, -1, {ENOMEM, EAGAIN}},
    {SYS_mprotect, "mprotect", false, -1, {ENOMEM}},
};

Kind const* findKind(int number)
{
    for (Kind const& kind : kinds)
        if (kind.number == number)
            return &kind;
    return nullptr;
}

/// Shared by the processes of a trial.
struct State
{
    std::atomic<bool> isArmed;
    std::atomic<long> count;
    std::atomic<long> hits;
    std::atomic<long> left;  ///< how many more of the kind fail behind the first one
    std::atomic<int> number;
    int error;
    bool isLastChoice;
    CallPlan plan;
    void (*onFailure)();
};

State* state = nullptr;

/// A copy of the instruction of one place.
struct alignas(32) Copy
{
    unsigned char bytes[8];       ///< the call, and a jump to what follows
    std::uint64_t returnAddress;  ///< behind the original
    std::atomic<std::uint64_t> original;
};

constexpr std::size_t copiesCount = 2048;
Copy* copies = nullptr;

struct Range
{
    std::uint64_t begin, end;
};
Range ranges[2];

/// The place where the call is made in its turn. Each is filled by whichever thread takes it.
std::uint64_t copyOf(std::uint64_t behind)
{
    for (std::size_t at = (behind >> 1) % copiesCount;; at = (at + 1) % copiesCount) {
        Copy& copy = copies[at];
        std::uint64_t expected = 0;
        if (copy.original.load() == 0 && copy.original.compare_exchange_strong(expected, behind)) {
            // syscall; jmp *2(%rip), which is `returnAddress`
            static constexpr unsigned char code[8] = {0x0F, 0x05, 0xFF, 0x25, 0x00, 0x00, 0x00, 0x00};
            std::memcpy(copy.bytes, code, sizeof code);
            copy.returnAddress = behind;
        }
        if (copy.original.load() == behind) {
            while (reinterpret_cast<std::atomic<std::uint64_t>&>(copy.returnAddress).load() != behind)
                continue;
            return reinterpret_cast<std::uint64_t>(copy.bytes);
        }
    }
}

/// For the handler: from this program's own code, which the filter lets through.
long callDirectly(long number, long argument)
{
    long result;
    asm volatile("syscall" : "=a"(result) : "a"(number), "D"(argument) : "rcx", "r11", "memory");
    return result;
}

constexpr long leastToCut = 64;  ///< messages and counters come whole or not at all

bool canFail(Kind const& kind, Manner manner, ::greg_t const* registers)
{
    switch (manner) {
    case Manner::refused:
    case Manner::refusedFromThere:
        return kind.errors[0] != 0;
    case Manner::interrupted:
        return kind.isInterruptible;
    default:
        return kind.sizeRegister != -1 && registers[kind.sizeRegister] > leastToCut;
    }
}

bool isForGood(Manner manner)
{
    return manner == Manner::refusedFromThere || manner == Manner::cutShortFromThere;
}

/// Whether this call is the one, or one that follows it.
bool isChosen(Kind const& kind)
{
    State& s = *state;
    if (s.number.load() != none)
        return s.number.load() == kind.number && s.left.fetch_sub(1) > 0;
    if (s.count.fetch_add(1) != s.plan.index)
        return false;
    const bool hasErrors = s.plan.manner == Manner::refused || s.plan.manner == Manner::refusedFromThere;
    s.isLastChoice = !hasErrors || kind.errors[s.plan.choice + 1] == 0;
    s.error = hasErrors ? kind.errors[s.plan.choice] : s.plan.manner == Manner::interrupted ? EINTR : 0;
    s.left = isForGood(s.plan.manner) ? 1L << 40 : s.plan.manner == Manner::interrupted ? 2 : 0;
    s.number = kind.number;
    return true;
}

/// True if the call has its result.
bool fail(::greg_t* registers)
{
    Kind const* const kind = findKind(static_cast<int>(registers[REG_RAX]));
    if (!state->isArmed.load() || kind == nullptr || !canFail(*kind, state->plan.manner, registers) ||
        !isChosen(*kind))
        return false;
    if (state->hits.fetch_add(1) == 0)
        state->onFailure();
    if (state->error == 0) {
        ::greg_t& size = registers[kind->sizeRegister];
        // A listing needs room for its longest entry.
        size = kind->number == SYS_getdents64 ? 280 : size / 2;
        return false;
    }
    // The system closes a descriptor whatever it reports.
    if (kind->number == SYS_close)
        callDirectly(SYS_close, registers[REG_RDI]);
    registers[REG_RAX] = -state->error;
    return true;
}

/// Keeps the signal of the filter with this program's handler.
bool keepSignal(::greg_t* registers)
{
    if (registers[REG_RAX] == SYS_rt_sigaction && registers[REG_RDI] == SIGSYS && registers[REG_RSI] != 0) {
        registers[REG_RAX] = 0;
        return true;
    }
    if (registers[REG_RAX] == SYS_rt_sigprocmask && registers[REG_RSI] != 0 && registers[REG_RDI] != SIG_UNBLOCK) {
        static thread_local std::uint64_t mask;
        std::memcpy(&mask, reinterpret_cast<void const*>(registers[REG_RSI]), sizeof mask);
        mask &= ~(std::uint64_t{1} << (SIGSYS - 1));
        registers[REG_RSI] = reinterpret_cast<::greg_t>(&mask);
    }
    return false;
}

void onCall(int, ::siginfo_t*, void* context)
{
    const int before = errno;
    ::greg_t* const registers = static_cast<::ucontext_t*>(context)->uc_mcontext.gregs;
    if (!keepSignal(registers) && !fail(registers))
        registers[REG_RIP] = static_cast<::greg_t>(copyOf(static_cast<std::uint64_t>(registers[REG_RIP])));
    errno = before;
}

/// The code of the C library and the loader.
int noteRange(::dl_phdr_info* object, std::size_t, void*)
{
    char const* const slash = std::strrchr(object->dlpi_name, '/');
    char const* const name = slash != nullptr ? slash + 1 : object->dlpi_name;
    const int which = std::strncmp(name, "libc.so", 7) == 0 ? 0 : std::strncmp(name, "ld-linux", 8) == 0 ? 1 : -1;
    if (which == -1)
        return 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        auto const& header = object->dlpi_phdr[i];
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0)
            ranges[which] = {object->dlpi_addr + header.p_vaddr,
                             object->dlpi_addr + header.p_vaddr + header.p_memsz};
    }
    return 0;
}

/// Calls that a filter can't tell of, or must not: the end of a signal handler, of threads and processes, and what locks use.
constexpr int passed[] = {SYS_rt_sigreturn, SYS_exit, SYS_exit_group, SYS_futex, SYS_brk, SYS_munmap, SYS_madvise};

bool installFilter()
{
    constexpr unsigned ip = offsetof(::seccomp_data, instruction_pointer);
    const auto low = [](std::uint64_t value) { return static_cast<std::uint32_t>(value); };
    const auto high = [](std::uint64_t value) { return static_cast<std::uint32_t>(value >> 32); };
    ::sock_filter code[64];
    unsigned short size = 0;
    const auto add = [&](::sock_filter const& step) { code[size++] = step; };
    constexpr auto word = BPF_LD | BPF_W | BPF_ABS;
    constexpr auto equal = BPF_JMP | BPF_JEQ | BPF_K;
    constexpr auto atLeast = BPF_JMP | BPF_JGE | BPF_K;
    constexpr auto result = BPF_RET | BPF_K;
    add(BPF_STMT(word, offsetof(::seccomp_data, nr)));
    for (const int number : passed) {
        add(BPF_JUMP(equal, static_cast<unsigned>(number), 0, 1));
        add(BPF_STMT(result, SECCOMP_RET_ALLOW));
    }
    for (Range const& range : ranges) {
        // Ranges are far below 4 GiB, and none crosses a border of that size; see catchCalls().
        add(BPF_STMT(word, ip + 4));
        add(BPF_JUMP(equal, high(range.begin), 0, 4));
        add(BPF_STMT(word, ip));
        add(BPF_JUMP(atLeast, low(range.begin), 0, 2));
        add(BPF_JUMP(atLeast, low(range.end), 1, 0));
        add(BPF_STMT(result, SECCOMP_RET_TRAP));
    }
    add(BPF_STMT(result, SECCOMP_RET_ALLOW));
    const ::sock_fprog program{size, code};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
}

bool setHandler()
{
    struct ::sigaction action = {};
    action.sa_sigaction = onCall;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    ::sigset_t signal;
    ::sigemptyset(&signal);
    ::sigaddset(&signal, SIGSYS);
    return ::sigaction(SIGSYS, &action, nullptr) == 0 && ::sigprocmask(SIG_UNBLOCK, &signal, nullptr) == 0;
}
}  // namespace

char const* VnTest::whyNoFailingCalls()
{
    if (state == nullptr) {
        void* const shared =
            ::mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        void* const code = ::mmap(nullptr, copiesCount * sizeof(Copy), PROT_READ | PROT_WRITE | PROT_EXEC,
                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (shared == MAP_FAILED || code == MAP_FAILED)
            return "the system gives no memory that is written and executed";
        state = static_cast<State*>(shared);
        copies = static_cast<Copy*>(code);
        ::dl_iterate_phdr(noteRange, nullptr);
    }
    for (Range const& range : ranges) {
        if (range.end == 0)
            throw std::logic_error("the code of the C library or of the loader isn't found");
        // A filter compares 32 bits at a time. Where libraries are loaded is drawn anew for each process.
        if (range.begin >> 32 != (range.end - 1) >> 32)
            return "the code of the C library lies across a border of 4 GiB this time";
    }
    return nullptr;
}

bool VnTest::catchCalls()
{
    return setHandler() && installFilter();
}

void VnTest::failCalls(CallPlan const& plan, void (*onFailure)())
{
    state->plan = plan;
    state->onFailure = onFailure;
    state->count = 0;
    state->hits = 0;
    state->left = 0;
    state->number = none;
    state->error = 0;
    state->isLastChoice = true;
    state->isArmed = true;
}

long VnTest::stopFailingCallsOfAll()
{
    state->isArmed = false;
    return state->hits;
}

void VnTest::forgetCallFindings()
{
    state->number = none;
    state->hits = 0;
}

VnTest::CallFindings VnTest::getCallFindings()
{
    return {state->number != none, state->isLastChoice, state->number, state->error, state->hits};
}

char const* VnTest::getCallName(int number)
{
    Kind const* const kind = findKind(number);
    return kind != nullptr ? kind->name : "another call";
}
#else
char const* VnTest::whyNoFailingCalls()
{
    return "the instruction of a system call is known for x86-64 only";
}
bool VnTest::catchCalls()
{
    return false;
}
void VnTest::failCalls(CallPlan const&, void (*)()) {}
long VnTest::stopFailingCallsOfAll()
{
    return 0;
}
void VnTest::forgetCallFindings() {}
VnTest::CallFindings VnTest::getCallFindings()
{
    return {};
}
char const* VnTest::getCallName(int)
{
    return "";
}
#endif
