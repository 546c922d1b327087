// The log: its outputs, with and without a lock between processes, its reader, and the thread layer.
#include "act.h"

#include "lockname.h"
#include "logfile.h"
#include "tempfolder.h"
#include "testpackage.h"

#include <threadlog/threadlog.h>

#include <base/lglog.h>
#include <base/lgqueue.h>
#include <base/lgreader.h>
#include <base/lgregistry.h>
#include <base/osenv.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace Vn;

namespace VnTest
{
namespace
{
void set(std::string const& name, std::string const& value)
{
    OsEnv::putVariable((name + "=" + value).c_str());
}

/// A line that no failure may leave: neither an event's, nor a banner's, nor an empty one; "" if there is none. A file that
/// ends within a line may be completed by a later write, unless it has been closed.
std::string findTornLine(std::string const& path, bool isClosed)
{
    std::vector<std::string> lines = linesOf(path);
    if (!isClosed && !lines.empty() && lines.back().ends_with("(no line end)"))
        lines.pop_back();
    for (std::string const& line : lines) {
        const bool isBanner = line.empty() || (line.starts_with("===== ") && !line.ends_with("(no line end)"));
        if (!isBanner && !LogLine::parse(line))
            return "a torn line in the log: " + line;
    }
    return "";
}

int countLines(std::string const& path, std::string const& part)
{
    const std::vector<std::string> lines = linesOf(path);
    return static_cast<int>(
        std::count_if(lines.begin(), lines.end(), [&](auto const& line) { return line.find(part) != line.npos; }));
}

/// Outputs that are opened, written and closed again.
class Logging : public Act
{
public:
    void prepare() override
    {
        set("T4Q_TEST_DIR", _folder.path());
        set("VN_LOG_WARNING", "+" + _folder.path("warning.log"));
        set("VN_LOG_GROUPS", "Faults=Tracing");
    }

    void run() override
    {
        LgLog::init();
        _isOpen = true;
        LgQueue queue(17);
        const Registered registered(queue);
        ++_run;
        for (int i = 0; i < messages; ++i)
            add(queue, i % 2 == 0 ? LgTypes::Warning : LgTypes::FatalError, textOf(i));
        LgReader().flushAll();
        LgLog::destroy();
        _isOpen = false;
    }

    /// None is torn, and none is there twice. Once all works again each is there.
    std::string findFault(bool hasThrown) override
    {
        for (char const* name : {"warning.log", "events.log"}) {
            const std::string torn = findTornLine(_folder.path(name), false);
            if (!torn.empty())
                return torn;
        }
        for (int i = 0; i < messages; ++i) {
            const int count = countLines(_folder.path(i % 2 == 0 ? "warning.log" : "events.log"), textOf(i));
            if (count > 1)
                return "a message twice";
            if (count == 0 && _hasFailed && !hasThrown)
                return "a message is missing though all works";
        }
        _hasFailed = true;
        return "";
    }

    void recover() override
    {
        if (_isOpen)
            LgLog::destroy();
        _isOpen = false;
    }

protected:
    TempFolder const& getFolder() const { return _folder; }

private:
    static constexpr int messages = 4;

    /// In the registry for a block.
    class Registered
    {
    public:
        explicit Registered(LgQueue& queue) : _queue(queue) { LgLog::getRegistry()->registerQueue(&queue); }
        ~Registered() { LgLog::getRegistry()->deregisterQueue(&_queue); }
        Registered(Registered const&) = delete;
        Registered& operator=(Registered const&) = delete;

    private:
        LgQueue& _queue;
    };

    static void add(LgQueue& queue, LgTypes::Level level, std::string const& text)
    {
        queue.reserveEntry(level);
        queue.getStream() << text.c_str() << ends;
        queue.addEntry();
    }

    std::string textOf(int number) const
    {
        return "message " + std::to_string(number) + " of run " + std::to_string(_run);
    }

    TempFolder _folder;
    bool _isOpen = false;
    bool _hasFailed = false;  ///< what follows is a run without failures
    int _run = 0;
};

/// The same under a lock between processes.
class LoggingWithLock : public Logging
{
public:
    void prepare() override
    {
        Logging::prepare();
        _name.emplace(getFolder());
        set("VN_INTERNAL_INTERPROCESS_LOG_LOCK", _name->get());
    }

private:
    std::optional<LockName> _name;
};

/// The thread layer, with messages of two threads.
class ThreadLogging : public Act
{
public:
    void prepare() override
    {
        set("T4Q_TEST_DIR", _folder.path());
        start();
        _group.emplace(LgMajorGroup::getInstanceForName("Faults"), "Faults");
    }

    void run() override
    {
        ThreadLog log;
        VN_LOG(*_group, LgTypes::Warning, "message of the first");
        std::thread([this] { VN_LOG(*_group, LgTypes::FatalError, "message of the second"); }).join();
        log.flush();
        VN_LOG(*_group, LgTypes::Warning, "last message");
    }

    std::string findFault(bool) override { return findTornLine(_folder.path("events.log"), false); }

    ~ThreadLogging() override
    {
        _group.reset();
        stop();
    }

private:
    TempFolder _folder;
    std::optional<LgMinorGroup> _group;
};

template <class Kind>
NamedAct makeNamed(char const* name)
{
    return {name, [] { return std::make_unique<Kind>(); }, true};
}
}  // namespace

void addLogActs(std::vector<NamedAct>& acts)
{
    acts.push_back(makeNamed<Logging>("log"));
    acts.push_back(makeNamed<LoggingWithLock>("logWithLock"));
    acts.push_back(makeNamed<ThreadLogging>("threadLog"));
}

}  // namespace VnTest
