#include "contestant.h"

#include <boost/core/null_deleter.hpp>
#include <boost/log/attributes.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks.hpp>
#include <boost/log/sources/logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/make_shared.hpp>

#include <fstream>

namespace VnBench
{
namespace
{
namespace log = boost::log;
namespace expr = boost::log::expressions;

using Backend = log::sinks::text_ostream_backend;

template <class Sink>
boost::shared_ptr<Sink> addSink(std::string const& path, std::string const& channel, bool isFlushing)
{
    const auto backend = boost::make_shared<Backend>();
    backend->add_stream(boost::make_shared<std::ofstream>(path));
    backend->auto_flush(isFlushing);
    const auto sink = boost::make_shared<Sink>(backend);
    sink->set_filter(expr::attr<std::string>("Logger") == channel);
    sink->set_formatter(
        expr::stream << expr::format_date_time<boost::posix_time::ptime>("TimeStamp", "%Y-%m-%d %H:%M:%S.%f") << " "
                     << expr::smessage);
    log::core::get()->add_sink(sink);
    log::core::get()->add_global_attribute("TimeStamp", log::attributes::local_clock());
    return sink;
}

Contestant makeFrom(std::string const& name, std::string const& channel, std::function<void()> drain)
{
    const auto logger = std::make_shared<log::sources::logger>();
    logger->add_attribute("Logger", log::attributes::constant<std::string>(channel));
    return makeContestant(
        name, [logger](int) { BOOST_LOG(*logger) << "Bench a message of some forty characters in all"; },
        [logger](int i) { BOOST_LOG(*logger) << "Bench a message with the number " << i; },
        [logger](int i) { BOOST_LOG(*logger) << "Bench tile " << i << " of " << i * 7 << " took " << i * 0.37; },
        std::move(drain));
}
}  // namespace

Contestant makeBoostLog(std::string const& folder)
{
    const auto sink =
        addSink<log::sinks::synchronous_sink<Backend>>(folder + "/boostlog.log", "synchronous", false);
    return makeFrom("Boost.Log", "synchronous", [sink] { sink->flush(); });
}

Contestant makeBoostLogFlushing(std::string const& folder)
{
    const auto sink =
        addSink<log::sinks::synchronous_sink<Backend>>(folder + "/boostlogflushing.log", "flushing", true);
    return makeFrom("Boost.Log", "flushing", [sink] { sink->flush(); });
}

Contestant makeBoostLogAsync(std::string const& folder)
{
    const auto sink =
        addSink<log::sinks::asynchronous_sink<Backend>>(folder + "/boostlogasync.log", "asynchronous", false);
    return makeFrom("Boost.Log async", "asynchronous", [sink] { sink->flush(); });
}

}  // namespace VnBench
