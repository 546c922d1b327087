#pragma once

#include "logfile.h"
#include "tempfolder.h"

#include <base/lglog.h>
#include <base/lgreader.h>
#include <base/osenv.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace VnTest
{

constexpr char const* logVariables[] = {"T4Q_TEST_DIR",
                                        "VN_LOG_INTERNAL_ERROR",
                                        "VN_LOG_FATAL_ERROR",
                                        "VN_LOG_RECOVERABLE_ERROR",
                                        "VN_LOG_WARNING",
                                        "VN_LOG_INFORMATIONAL",
                                        "VN_LOG_TRACING",
                                        "VN_LOG_PROFILING",
                                        "VN_LOG_DEFAULT_LEVEL",
                                        "VN_LOG_GROUPS",
                                        "VN_BLOCKING_TRACE",
                                        "VN_INTERNAL_INTERPROCESS_LOG_LOCK",
                                        "VN_LOG_DISABLE_TIMESTAMPS"};

/// The logger as a test sets it up, without the packages; its default files are in a folder of their own.
class LoggerTest : public testing::Test
{
protected:
    LoggerTest() { clear(); }

    ~LoggerTest() override
    {
        stop();
        clear();
    }

    static void set(std::string const& name, std::string const& value)
    {
        Vn::OsEnv::putVariable((name + "=" + value).c_str());
    }

    void start()
    {
        if (Vn::OsEnv::getVariable("T4Q_TEST_DIR") == nullptr)
            set("T4Q_TEST_DIR", folder.path());
        Vn::LgLog::init();
        _isStarted = true;
    }

    void stop()
    {
        if (_isStarted)
            Vn::LgLog::destroy();
        _isStarted = false;
    }

    std::vector<std::string> events() const { return linesOf(folder.path("events.log")); }

    /// The lines between the banners.
    std::vector<std::string> messages() const
    {
        std::vector<std::string> lines = events();
        const auto isBanner = [](std::string const& line) { return line.empty() || line.starts_with("====="); };
        std::erase_if(lines, isBanner);
        return lines;
    }

    TempFolder folder;

private:
    static void clear()
    {
        for (char const* name : logVariables)
            set(name, "");
        Vn::LgLog::setLoggerActivation(false);
        Vn::LgLog::setQueueFunction(nullptr);
        Vn::LgLog::enableTimeStamps();
        Vn::LgLog::setBlockingTrace(false);
        Vn::LgMajorGroup::setDefaultThreshold(Vn::LgTypes::Warning);
    }

    bool _isStarted = false;
};

/// A queue in the registry whose messages bear chosen stamps. All are put in before the first one is taken out.
class StampedQueue
{
public:
    explicit StampedQueue(unsigned long threadId = 0)
        : _queue(new Vn::LgQueue(threadId)),
          _entries(const_cast<Vn::LgQueue::Entry*>(&_queue->readEntry()))  // the first one of the ring
    {
        Vn::LgLog::getRegistry()->registerQueue(_queue);
    }

    /// A message of `ticks` after the logger's start.
    void log(std::uint64_t ticks, std::string const& text, Vn::LgTypes::Level level = Vn::LgTypes::Warning)
    {
        ASSERT_TRUE(_queue->reserveEntry(level));
        _queue->getStream() << text.c_str() << Vn::ends;
        _queue->addEntry();
        stampLast(ticks);
    }

    void stampLast(std::uint64_t ticks)
    {
        _entries[_count++ % ringSize].setTimeStamp(Vn::LgLog::getStart() + ticks);
    }

    /// The queue lives until a reader deletes it, or end() does.
    Vn::LgQueue& operator*() const { return *_queue; }
    Vn::LgQueue* operator->() const { return _queue; }

    void end()
    {
        Vn::LgLog::getRegistry()->deregisterQueue(_queue);
        delete _queue;
    }

private:
    static constexpr int ringSize = 1024;

    Vn::LgQueue* _queue;
    Vn::LgQueue::Entry* _entries;
    int _count = 0;
};

}  // namespace VnTest
