// A client of the installed thread layer: a thread logs, and its message is in the file.
#include <base/ininitmgr.h>
#include <base/lglog.h>
#include <threadlog/threadlog.h>

#include <thread>

int main(int argc, char** argv)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    Vn::ThreadLog log;
    const Vn::LgMinorGroup group(Vn::LgMajorGroup::getInstanceForName("Client"), "Client");
    std::thread([&group] { VN_LOG(group, Vn::LgTypes::Warning, "from a thread of the installed library"); }).join();
    return 0;
}
