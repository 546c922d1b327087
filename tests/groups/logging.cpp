#include "workgroup.h"

#include <base/lgqueue.h>
#include <base/trace.h>

namespace
{
class Logging : public WorkGroup
{
public:
    Logging() : WorkGroup("logging", "Sends messages through a queue and counts what arrives.", 10000) {}

private:
    void work(unsigned long count) override
    {
        Vn::LgQueue queue;
        for (unsigned long i = 0; i < count; ++i) {
            require(queue.reserveEntry(Vn::LgTypes::Informational), "room for a message");
            queue.getStream() << "message " << i << Vn::ends;
            queue.addEntry();
            require(!queue.readEntry().isOverflowEntry(), "that nothing is lost");
            char text[64];
            queue.getStream() >> text;
            require(text == "message " + std::to_string(i), "the text of a message");
            queue.removeEntry();
        }
        require(queue.isEmpty(), "the end of the messages");
    }
} logging;

class Tracing : public WorkGroup
{
public:
    Tracing() : WorkGroup("tracing", "Enters and leaves functions under a level that is off.", 10000) {}

private:
    void work(unsigned long count) override
    {
        Vn::TraceLevel const& level = *Vn::Trace::registerLevel("Groups", "tests/groups/logging.cpp");
        unsigned long evaluated = 0;
        for (unsigned long i = 0; i < count; ++i) {
            VN_TRACE_ENTRY(level, "work");
            VN_TRACE(level, "step " << ++evaluated);
        }
        require(Vn::Trace::isEnabled(level) || evaluated == 0, "what isn't wanted isn't evaluated");
    }
} tracing;
}  // namespace
