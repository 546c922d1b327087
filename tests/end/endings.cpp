// Programs that end while something of theirs still uses the library: endings SCENARIO.
#include <base/envvar.h>
#include <base/ininitmgr.h>
#include <base/inpackages.h>
#include <base/lglog.h>
#include <base/lgreader.h>

#include <cstring>
#include <future>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace
{
/// Logs when it is destroyed, behind the stop.
struct Goodbye
{
    ~Goodbye()
    {
        if (!group)
            return;
        VN_LOG(*group, Vn::LgTypes::FatalError, "goodbye");
        std::cout << "gone" << std::endl;
    }

    std::optional<Vn::LgMinorGroup> group;
} goodbye;

// Made before the registry of the environment's variables, which the first variable makes, and destroyed behind it.
std::unique_ptr<Vn::EnvVar> ownedVariable;
std::vector<Vn::EnvIntVar> numbers;
std::optional<Vn::EnvDoubleVar> fraction;

void fillOwners()
{
    ownedVariable = std::make_unique<Vn::EnvVar>("VN_TEST_A", "a");
    numbers.reserve(2);
    numbers.emplace_back("VN_TEST_B", 1);
    numbers.emplace_back("VN_TEST_C", 2);
    fraction.emplace("VN_TEST_D", 0.5);
    std::cout << Vn::EnvVar::getRegistry().size() << std::endl;
}

/// Tells when the reader has taken the first message.
class FirstIsTaken : public Vn::LgQueue::Observer
{
public:
    void entryAdded(Vn::LgQueue&) override {}
    void waitForSpace(Vn::LgQueue const&, int) override {}

    void entryRemoved(Vn::LgQueue&) override
    {
        if (!_isTold)
            isTaken.set_value();
        _isTold = true;
    }

    static inline std::promise<void>& isTaken = *new std::promise<void>;

private:
    bool _isTold = false;
};

/// Nobody waits for the reader, which is writing lines when `main` returns.
void logWithAReader()
{
    static Vn::LgQueue& queue = *new Vn::LgQueue(1);
    queue.changeObserver(Vn::ObjPtr<Vn::LgQueue::Observer>(new FirstIsTaken));
    Vn::LgLog::getRegistry()->registerQueue(&queue);
    Vn::LgLog::setQueueFunction([] { return &queue; });
    Vn::LgLog::setLoggerActivation(true);
    std::thread([] {
        for (;;)
            Vn::LgReader().flushAll();
    }).detach();
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Ending"), "Reader");
    for (int i = 0; i < 500; ++i)
        VN_LOG(group, Vn::LgTypes::Warning, "message " << i);
    FirstIsTaken::isTaken.get_future().wait();
}

bool is(char const* text, char const* name)
{
    return std::strcmp(text, name) == 0;
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    char const* const scenario = argv[1];
    if (is(scenario, "owners")) {
        fillOwners();
        return 0;
    }
    int none = 0;
    char const* const* arguments = nullptr;
    if (is(scenario, "reader")) {
        Vn::InInitMgr::getInstance().initialize(none, arguments);
        logWithAReader();
        return 0;
    }
    Vn::InInitGuard guard(none, arguments);
    if (is(scenario, "goodbye"))
        goodbye.group.emplace(Vn::LgMajorGroup::getInstanceForName("Ending"), "Static");
    else if (is(scenario, "stoppedReader"))
        logWithAReader();
    else
        return 2;
    return 0;
}
