// The files of the log, beside the logger that owns and writes them.
//
// The logger says nothing of a file that it can't open or write, by its rules, so that a library can't spoil a program's
// standard error. A program that links the thread layer wants to know, and is told once for each file. What is looked at is the
// state of the logger's stream: failed without being bad means that the file couldn't be opened, bad that the system refuses a
// line.
//
// Each file is opened once more, for two uses: a crash handler writes there, and tells by it which file the logger has when that
// file's name may stand for another one by now (reopen()).
//
// Several levels may share a file. The logger gives them one stream, and the lowest of these levels stands for all here.
#include <threadlog/threadlogoutputs_p.h>

#include <base/hwcounter.h>
#include <base/lglog.h>
#include <base/osterminal.h>

#include <ctime>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <locale>
#include <sstream>
#include <system_error>

namespace Vn
{
namespace
{
/// One write, so that the lines of several threads and processes don't mix.
void tell(std::string const& path, std::string const& reason)
{
    std::cerr << "log: " + OsTerminal::shown(path) + ": " + reason + "\n";
}

/// What the logger wrote at its start, with the date of that: times in the new file count from there as well.
std::string bannerOfRun()
{
    std::ostringstream banner;
    banner.imbue(std::locale::classic());  // not the program's, as in the logger's own banner
    banner << "===== Message Logger Startup =====\n";
    if (LgLog::isTimeStampsEnabled()) {
        const double age = HwCounter::seconds(LgLog::getStart(), HwCounter::timeStamp());
        const std::time_t start = std::time(nullptr) - static_cast<std::time_t>(age);
        banner << "===== Started on " << std::ctime(&start) << "\n===== Clock Frequency: " << std::fixed
               << std::setprecision(9) << HwCounter::resolution() << "\n";
    }
    return banner.str();
}
}  // namespace

/// Levels of one file share the logger's stream: the lowest of them stands for all. Null for what is no level: a site may log
/// at any number that its program has cast to one, and its messages go to no file.
ThreadLogOutputs::Output const* ThreadLogOutputs::findOutput(LgTypes::Level level) const
{
    if (level < 0 || level >= levels)
        return nullptr;
    for (Output const& output : _outputs)
        if (output.stream != nullptr && output.stream == _outputs[level].stream)
            return &output;
    return nullptr;
}

/// Whether the file is to be opened, told of and replaced by this output, and not by one of a lower level.
bool ThreadLogOutputs::isFirstOfItsFile(Output const& output) const
{
    return output.stream != nullptr && findOutput(static_cast<LgTypes::Level>(&output - _outputs)) == &output;
}

/// Absolute paths: a program may change its folder before it calls reopen().
void ThreadLogOutputs::open()
{
    for (int i = 0; i < levels; ++i) {
        const auto level = static_cast<LgTypes::Level>(i);
        char const* const name = LgLog::getLevelFileName(level);
        Output& output = _outputs[i];
        output = Output();
        if (name == nullptr)
            continue;
        output.stream = LgLog::getLevelOutput(level);
        if (!isFirstOfItsFile(output))
            continue;
        std::error_code failure;
        output.path = std::filesystem::absolute(name, failure).string();
        if (failure)
            output.path = name;
        output.isLink = isSymlink(output.path);
        // One that has refused its banner is bad as well: the next line is refused, too, and tells why.
        if (output.stream->fail() && !output.stream->bad()) {
            tell(name, getOpenFailure(name));
            output.isTold = true;
            output.isRefused = true;
        } else
            openOwn(output);
    }
}

/// Without a descriptor of our own the file has no part in a crash and can't be replaced.
void ThreadLogOutputs::openOwn(Output& output)
{
    output.handle = openHandle(output.path);
    if (output.handle == closed)
        tell(output.path, "messages before a crash can't be written here: " + getOpenFailure(output.path));
    else
        output.isAlone = isAlone(output.handle);
}

void ThreadLogOutputs::close()
{
    for (Output& output : _outputs)
        if (output.handle != closed) {
            closeHandle(output.handle);
            output.handle = closed;
        }
}

/// A stream that recovers and fails again isn't told again: on a disk that is full now and then that would be a line for each
/// time.
/// Without a reason, since nothing was written, it waits for the line that is refused.
void ThreadLogOutputs::tellFailures(int error)
{
    const std::string reason = getErrorText(error);
    if (reason.empty())
        return;
    for (Output& output : _outputs)
        if (isFirstOfItsFile(output) && !output.isTold && output.stream->fail()) {
            tell(output.path, reason);
            output.isTold = true;
        }
}

/// All of them, also behind one that fails: each file counts for itself.
bool ThreadLogOutputs::reopen()
{
    const std::string banner = bannerOfRun();
    bool isDone = true;
    for (Output& output : _outputs) {
        if (!isFirstOfItsFile(output))
            continue;
        // The logger's stream stays as it is, whatever the path leads to by now.
        const std::string failure =
            output.isRefused ? "it couldn't be opened at the start" : reopenFile(output, banner);
        if (!failure.empty()) {
            tell(output.path, failure);
            isDone = false;
        }
    }
    return isDone;
}

/// A level without a file takes each line, as it does in the logger.
bool ThreadLogOutputs::append(LgTypes::Level level, std::string_view text) const
{
    Output const* const output = findOutput(level);
    return output == nullptr || output->handle == closed || appendTo(output->handle, text, output->isStuck);
}

std::size_t ThreadLogOutputs::readTail(LgTypes::Level level, char* bytes, std::size_t size) const
{
    Output const* const output = findOutput(level);
    return output != nullptr && output->handle != closed ? readTailOf(output->handle, bytes, size) : 0;
}

}  // namespace Vn
