// Loads and unloads a library while another thread logs: loadsoak COUNT. The library has packages, groups, a level of trace
// and variables of the environment; all of it must be there after each load and gone after each unload, no message may be
// lost or torn, and memory must stay flat. Ends with 0 if so.
#include "library.h"
#include "livememory.h"
#include "tempfolder.h"

#include <base/envvar.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/osenv.h>
#include <base/trace.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <optional>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <thread>

namespace
{
// What the C library keeps back may come and go; a leak of the smallest allocation in each of 1,000 loads is twice this.
constexpr std::size_t tolerance = 16384;

constexpr unsigned long warmUp = 100;

/// Takes the lines of the log, and counts those of each text.
class Lines : public std::streambuf
{
public:
    unsigned long arrivals = 0;
    unsigned long works = 0;
    unsigned long others = 0;
    unsigned long torn = 0;

protected:
    std::streamsize xsputn(char const* text, std::streamsize size) override
    {
        const std::string_view line(text, static_cast<std::size_t>(size));
        if (line == "Arrival is here\n")
            ++arrivals;
        else if (line == "Work none 7.500000\n")
            ++works;
        else if (line == "Resident stays\n")
            ++others;
        else
            ++torn;
        return size;
    }
    int_type overflow(int_type) override
    {
        ++torn;
        return 0;
    }
};

/// Counts the lines of trace.
class TraceCounter : public Vn::TraceManager
{
public:
    TraceCounter() : TraceManager(1) {}

    Vn::Trace& getTrace() override { return _trace; }
    void print(char const*) const override { ++lines; }

    mutable unsigned long lines = 0;

private:
    Vn::Trace _trace;
};

thread_local Vn::LgQueue* ownQueue = nullptr;

/// A queue that the reader sees; it stays to the end of the process.
Vn::LgQueue& makeQueue(unsigned long thread)
{
    auto* const queue = new Vn::LgQueue(thread);
    Vn::LgLog::getRegistry()->registerQueue(queue);
    return *queue;
}

/// Logs and reads all the time, but for pauses.
class Resident
{
public:
    Resident()
        : _queue(makeQueue(2)),
          _group(Vn::LgMajorGroup::getInstanceForName("Resident"), "Resident"),
          _thread([this] { run(); })
    {}

    ~Resident()
    {
        _isEnding = true;
        _thread.join();
    }

    /// While it is locked, nothing is logged or read by the thread.
    std::mutex& getPause() { return _pause; }

    /// Waits until the thread has logged and read all that there is now.
    void waitForRound() const
    {
        const unsigned long seen = _rounds;
        while (_rounds < seen + 2)
            std::this_thread::yield();
    }

    unsigned long getRounds() const { return _rounds; }

private:
    void run()
    {
        ownQueue = &_queue;
        while (!_isEnding) {
            {
                const std::lock_guard guard(_pause);
                VN_LOG(_group, Vn::LgTypes::Warning, "stays");
                Vn::LgReader().flushAll();
            }
            ++_rounds;
            std::this_thread::yield();
        }
    }

    Vn::LgQueue& _queue;
    Vn::LgMinorGroup _group;
    std::mutex _pause;
    std::atomic<bool> _isEnding = false;
    std::atomic<unsigned long> _rounds = 0;
    std::thread _thread;
};

bool isListed(char const* package)
{
    std::ostringstream text;
    Vn::InInitMgr::getInstance().dump(text);
    return text.str().find(package) != std::string::npos;
}

/// False, and told, unless all is well.
bool check(bool isRight, char const* what)
{
    if (!isRight)
        std::cout << "wrong: " << what << std::endl;
    return isRight;
}

/// One visit of the library; `whileItIsHere` is called before it goes.
template <class Action>
bool visit(Action const& whileItIsHere)
{
    {
        std::optional<VnTest::Library> guest;
        {
            const Vn::InReinitGuard starts;
            guest.emplace("VNtestguest");
        }
        if (!check(isListed("'guest' Initialized") && isListed("'guestHelper' Initialized"),
                   "packages don't run") ||
            !check(Vn::EnvVar::getRegistry().size() == 3, "variables aren't listed") ||
            !check(guest->find<double()>("guestWork")() == 7.5, "the library's work"))
            return false;
        whileItIsHere();
    }
    return check(!isListed("'guest"), "packages stay") &&
           check(Vn::EnvVar::getRegistry().empty(), "variables stay") &&
           check(!VnTest::Library::isLoaded("VNtestguest"), "the library stays");
}

/// Live memory at rest.
std::size_t measure(Resident& resident)
{
    resident.waitForRound();
    const std::lock_guard pause(resident.getPause());
    return VnSoak::getLiveMemory();
}

/// All visits, in `count` of which memory stays flat; the first ones make what stays.
bool visitOften(unsigned long count, Resident& resident)
{
    std::size_t first = 0;
    for (unsigned long done = 0; done < warmUp + count; ++done) {
        if (done == warmUp)
            first = measure(resident);
        // Every other time the thread logs for sure while the library is here; and the ring of this one never overflows.
        const auto meet = [&] {
            if (done % 2 == 0)
                resident.waitForRound();
        };
        if (!visit(meet))
            return false;
    }
    const std::size_t last = measure(resident);
    std::cout << "live memory: " << first << " bytes after " << warmUp << " loads, " << last << " after "
              << warmUp + count << std::endl;
    if (!VnSoak::isFlatWithoutLeaks()) {
        std::cout << "not compared: the address sanitizer looks for leaks instead" << std::endl;
        return true;
    }
    return check(last < first + tolerance, "memory grows");
}

bool soak(unsigned long count, Lines& lines)
{
    Vn::LgLog::getLevelOutput(Vn::LgTypes::Warning)->rdbuf(&lines);
    Vn::LgLog::disableTimeStamps();
    const TraceCounter traces;
    Vn::Trace::setOptions("show=Guest");
    ownQueue = &makeQueue(1);
    Vn::LgLog::setQueueFunction([] { return ownQueue; });
    Vn::LgLog::setLoggerActivation(true);

    unsigned long rounds = 0;
    bool isRight = false;
    {
        Resident resident;
        isRight = visitOften(count, resident);
        resident.waitForRound();
        rounds = resident.getRounds();
    }
    Vn::LgReader().flushAll();
    std::cout << warmUp + count << " loads; lines of the library: " << lines.arrivals + lines.works
              << ", of the other thread: " << lines.others << ", torn: " << lines.torn << std::endl;
    return isRight &&
           check(lines.arrivals == warmUp + count && lines.works == warmUp + count, "lines are missing") &&
           check(lines.others >= rounds, "lines of the other thread are missing") &&
           check(lines.torn == 0, "lines are torn") &&
           check(traces.lines == 3 * (warmUp + count), "lines of trace are missing");
}
}  // namespace

int main(int argc, char** argv)
{
    const unsigned long count = argc == 2 ? std::strtoul(argv[1], nullptr, 10) : 0;
    if (count == 0) {
        std::cerr << "loadsoak COUNT: loads and unloads a library so often while another thread logs\n";
        return 2;
    }
    Lines lines;  // takes the banner of the stop as well
    const VnTest::TempFolder folder;
    Vn::OsEnv::putVariable(("T4Q_TEST_DIR=" + folder.path()).c_str());
    int none = 0;
    char const* const* arguments = nullptr;
    Vn::InInitGuard guard(none, arguments);
    return soak(count, lines) ? 0 : 1;
}
