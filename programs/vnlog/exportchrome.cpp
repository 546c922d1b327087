// The trace event format of Chromium's tracing page, which Perfetto reads as well.
//
// Each run of each file is a process there, and a thread of the log a thread. Numbers for the processes are given in the order
// in which runs appear: a log doesn't tell process ids, and two files may hold the same ones. A call is an event "B" where it
// is entered and "E" where it is left; the viewer pairs them by nesting, so calls whose exit was not seen get an "E" where that
// shows, and calls whose entry was not seen a "B". Calls that are still open where their run ends, end there.
//
// Times are microseconds with three decimals, and count from one start for all files: a double, in which viewers keep them,
// has no room for nanoseconds since 1970.
#include "exportformat.h"
#include "exportjson_p.h"

#include <base/lgtypes.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <map>
#include <ostream>
#include <string>
#include <utility>

namespace vnlog
{
namespace
{
constexpr std::size_t longestTitle = 120;
constexpr int warning = Vn::LgTypes::Warning;

/// A thread's key, and one for the lines that don't tell theirs.
std::uint64_t getKey(Record const& record)
{
    constexpr std::uint64_t none = std::uint64_t{1} << 32;
    return record.hasStamp ? record.thread : none;
}

std::string getThreadName(std::uint64_t key)
{
    if (key > UINT32_MAX)
        return "lines without a thread";
    char name[32];
    std::snprintf(name, sizeof name, "thread 0x%08" PRIx64, key);
    return name;
}

class ChromeFormat : public ExportFormat
{
public:
    ChromeFormat(std::ostream& stream, std::int64_t start) : _stream(stream), _start(start)
    {
        _stream << R"({"displayTimeUnit":"ns","otherData":{"start":")" << toTimeText(start)
                << R"("},"traceEvents":[)";
    }

    void add(Record const& record, Run const& run) override
    {
        Process& process = findProcess(record, run);
        if (record.time)
            process.time = *record.time - _start;
        else if (record.sinceStart)
            process.time = *record.sinceStart;
        else
            countTimeless(record);
        // The banner of a run is what its process is named by.
        if (record.kind == Kind::Started)
            return;
        Thread& thread = findThread(process, getKey(record));
        if (record.kind == Kind::Overflow)
            addLoss(process, thread, record);
        else if (record.drawing.step == TraceStep::Enter || record.drawing.step == TraceStep::Leave)
            addStep(process, thread, record);
        else
            addInstant(process, thread, record);
    }

    void finish() override
    {
        closeFile();
        _stream << "\n]}\n";
    }

private:
    struct Thread
    {
        std::uint64_t number = 0;  ///< no other thread of the trace has it
        std::size_t open = 0;      ///< calls
    };

    struct Process
    {
        int number = 0;
        std::int64_t time = 0;  ///< of its last event
        long long lost = 0;     ///< messages, so far
        std::map<std::uint64_t, Thread> threads;
    };

    Process& findProcess(Record const& record, Run const& run)
    {
        if (record.file != _file) {
            closeFile();
            _file = record.file;
        }
        const auto [found, isNew] = _processes.try_emplace(record.run);
        if (isNew) {
            found->second.number = ++_processCount;
            nameProcess(found->second, record, run);
            if (_processes.size() > static_cast<std::size_t>(RecordReader::keptRuns))
                closeProcess(found == _processes.begin() ? std::next(found) : _processes.begin());
        }
        return found->second;
    }

    Thread& findThread(Process& process, std::uint64_t key)
    {
        const auto [found, isNew] = process.threads.try_emplace(key);
        if (isNew) {
            found->second.number = ++_threadCount;
            writeName("thread_name", process, found->second, {{"name", getThreadName(key)}});
        }
        return found->second;
    }

    void nameProcess(Process const& process, Record const& record, Run const& run)
    {
        const std::string part =
            record.run < 0 ? "before the first start" : "run " + std::to_string(record.run + 1);
        writeName("process_name", process, {}, {{"name", std::string(record.file) + ", " + part}});
        writeName("process_sort_index", process, {}, {{"sort_index", process.number}});
        if (run.started)
            writeName("process_labels", process, {},
                      {{"labels", toTimeText(static_cast<std::int64_t>(*run.started) * 1'000'000'000)}});
    }

    void closeFile()
    {
        while (!_processes.empty())
            closeProcess(_processes.begin());
    }

    void closeProcess(std::map<int, Process>::iterator process)
    {
        for (auto& [key, thread] : process->second.threads)
            endCalls(process->second, thread, thread.open, "the log ends");
        _processes.erase(process);
    }

    void endCalls(Process const& process, Thread& thread, std::size_t count, char const* reason)
    {
        thread.open -= count;
        for (; count != 0; --count) {
            Json event = makeEvent("E", process, thread);
            event["args"] = {{"end", reason}};
            write(event);
        }
    }

    void addStep(Process const& process, Thread& thread, Record const& record)
    {
        Record::Drawing const& drawing = record.drawing;
        endCalls(process, thread, std::min(thread.open, drawing.ended), "the exit was not seen");
        for (std::size_t i = 0; i < drawing.unseen; ++i)
            beginCall(process, thread, drawing.step == TraceStep::Leave ? drawing.text : "",
                      {{"begin", "the entry was not seen"}});
        if (drawing.step == TraceStep::Enter)
            beginCall(process, thread, drawing.text, makeArgs(record));
        else if (thread.open != 0) {
            write(makeEvent("E", process, thread));
            --thread.open;
        }
    }

    void beginCall(Process const& process, Thread& thread, std::string const& name, Json args)
    {
        Json event = makeEvent("B", process, thread);
        event["name"] = name.empty() ? "?" : name;
        event["cat"] = "call";
        event["args"] = std::move(args);
        write(event);
        ++thread.open;
    }

    void addInstant(Process const& process, Thread& thread, Record const& record)
    {
        Record::Drawing const& drawing = record.drawing;
        endCalls(process, thread, std::min(thread.open, drawing.ended), "the exit was not seen");
        for (std::size_t i = 0; i < drawing.unseen; ++i)
            beginCall(process, thread, "", {{"begin", "the entry was not seen"}});
        const std::string text = drawing.step == TraceStep::Text ? drawing.text : record.getMessage();
        Json event = makeEvent("i", process, thread);
        event["name"] = toTitle(toUtf8(text), longestTitle);
        event["cat"] = record.level >= 0 ? getLevelWord(record.level) : getKindWord(record.kind);
        event["s"] = record.hasStamp ? "t" : "p";
        if (record.level >= 0 && record.level <= warning)
            event["cname"] = record.level < warning ? "terrible" : "bad";
        event["args"] = makeArgs(record);
        event["args"]["text"] = text;
        addBytes(event["args"], "bytes", text);
        write(event);
    }

    /// A mark over the whole process, and a counter whose steps show from afar.
    void addLoss(Process& process, Thread const& thread, Record const& record)
    {
        process.lost += record.lost;
        Json event = makeEvent("i", process, thread);
        event["name"] = record.text;
        event["cat"] = getKindWord(record.kind);
        event["s"] = "p";
        event["cname"] = "terrible";
        event["args"] = makeArgs(record);
        event["args"]["lost"] = record.lost;
        write(event);
        Json counter = makeEvent("C", process, thread);
        counter["name"] = "lost messages";
        counter["args"] = {{"lost", process.lost}};
        write(counter);
    }

    static Json makeArgs(Record const& record)
    {
        Json args = {{"line", record.line}};
        if (!record.group.empty())
            args["group"] = record.group;
        if (!record.drawing.file.empty())
            args["source"] = record.drawing.file + ":" + std::to_string(record.drawing.line);
        if (!record.drawing.process.empty())
            args["process"] = record.drawing.process;
        return args;
    }

    static Json makeEvent(char const* phase, Process const& process, Thread const& thread)
    {
        constexpr double nanosecondsPerMicrosecond = 1000.0;
        return {{"ph", phase},
                {"ts", static_cast<double>(process.time) / nanosecondsPerMicrosecond},
                {"pid", process.number},
                {"tid", thread.number}};
    }

    void writeName(char const* what, Process const& process, Thread const& thread, Json args)
    {
        Json event = {{"ph", "M"}, {"name", what}, {"pid", process.number}, {"tid", thread.number}};
        event["args"] = std::move(args);
        write(event);
    }

    void write(Json const& event)
    {
        _stream << (std::exchange(_isFirst, false) ? "\n" : ",\n") << toJsonText(event);
    }

    std::ostream& _stream;
    std::int64_t _start;
    std::string _file;
    std::map<int, Process> _processes;  ///< by run, of the present file
    int _processCount = 0;
    std::uint64_t _threadCount = 0;
    bool _isFirst = true;
};
}  // namespace

std::unique_ptr<ExportFormat> makeChromeFormat(std::ostream& stream, std::int64_t start)
{
    return std::make_unique<ChromeFormat>(stream, start);
}

}  // namespace vnlog
