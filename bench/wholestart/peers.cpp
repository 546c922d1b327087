// What a program would take instead, up and down again: subsystems, options, settings and timers of POCO's Foundation and
// Util, and glog.
#include <Poco/Clock.h>
#include <Poco/Environment.h>
#include <Poco/Util/Application.h>
#include <Poco/Util/SystemConfiguration.h>
#include <glog/logging.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    char const* const folder = std::getenv("T4Q_TEST_DIR");
    if (folder != nullptr)
        FLAGS_log_dir = folder;
    google::InitGoogleLogging(argv[0]);
    LOG(INFO) << "started";
    Poco::AutoPtr<Poco::Util::Application> application = new Poco::Util::Application;
    application->init(argc, argv);
    const Poco::Clock clock;
    const bool isReady = clock.raw() != 0 && Poco::Environment::processorCount() != 0;
    google::ShutdownGoogleLogging();
    return isReady ? 0 : 1;
}
