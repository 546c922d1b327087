#include "contestant.h"

#include <glog/logging.h>

#include <cstdio>

namespace VnBench
{
namespace
{
Contestant makeFrom(bool isFlushing)
{
    return makeContestant(
        "glog",
        [isFlushing](int) {
            LOG(WARNING) << "Bench a message of some forty characters in all";
            if (isFlushing)
                google::FlushLogFilesUnsafe(google::GLOG_WARNING);
        },
        [isFlushing](int i) {
            LOG(WARNING) << "Bench a message with the number " << i;
            if (isFlushing)
                google::FlushLogFilesUnsafe(google::GLOG_WARNING);
        },
        [isFlushing](int i) {
            LOG(WARNING) << "Bench tile " << i << " of " << i * 7 << " took " << i * 0.37;
            if (isFlushing)
                google::FlushLogFilesUnsafe(google::GLOG_WARNING);
        },
        [] { google::FlushLogFiles(google::GLOG_INFO); });
}
}  // namespace

Contestant makeGlog(std::string const& folder)
{
    FLAGS_stderrthreshold = google::GLOG_FATAL;
    FLAGS_logbuflevel = google::GLOG_ERROR;
    google::SetLogDestination(google::GLOG_INFO, "");  // one file for a message, as the others have
    google::SetLogDestination(google::GLOG_WARNING, (folder + "/glog.").c_str());
    google::InitGoogleLogging("benchlogging");
    return makeFrom(false);
}

Contestant makeGlogFlushing(std::string const&)
{
    return makeFrom(true);
}

}  // namespace VnBench
