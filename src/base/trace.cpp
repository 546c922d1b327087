// Lines of trace: the prefix, the indentation, and the texts of entry and exit.
//
// A line has three stations. Its site forms it on a string stream of its own: log() writes the prefix and "| ", the site the
// text and a zero. The depth comes from the Trace object of the current manager (tracemanager.cpp), which may have one for
// each thread; what a prefix consists of comes from the options (traceoptions.cpp). Then the manager's print() gets the text,
// in one piece. So threads share no stream, and a line can't be cut by another one, unless the manager cuts it.
//
// An Entry remembers whether its level was on when it was made, and looks at nothing else at the exit: each "+" has its "/",
// and the depth comes back to where it was.
#include <base/trace.h>

#include <base/exbase.h>
#include <base/exreasontext_p.h>
#include <base/trace_p.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace Vn
{
namespace
{
/// Not allowed to throw, as it runs before `main`: an exception here would end the program without a message that the
/// loader shows. Only a lack of memory can get here; a bad VN_TRACE_OPTIONS has ended the program in TraceOptions::get().
TraceLevel* registerMainLevel() noexcept
{
    return Trace::registerLevel("Main", traceSourceName);
}
}  // namespace

bool Trace::_isOn = true;
TraceLevel* Trace::MainTraceLevel = registerMainLevel();

Trace::Trace() : _depth(0) {}

Trace::~Trace() = default;

void Trace::printPrefix(std::ostream&) {}

/// Copies what it keeps: both texts may belong to a library that is unloaded later, and levels stay.
TraceLevel* Trace::registerLevel(char const* name, char const* file)
{
    TraceLevel* const level = TraceOptions::get().findLevel(ExReasonText::orEmpty(name));
    if (file != nullptr)
        level->addFile(file);
    return level;
}

void Trace::setOptions(char const* options)
{
    TraceOptions::get().parse(options);
}

void Trace::printLevels(std::ostream& stream)
{
    TraceOptions::get().printLevels(stream);
}

/// For a site that writes its own text; VN_TRACE does.
void Trace::log(std::ostream& stream, char const* file, int line)
{
    prefix(stream, file, line);
    if (TraceOptions::get().isIndenting())
        stream << "| ";
}

/// Intended: one buffer for the process, so one thread at a time. A buffer of each call would cost its kilobyte of every
/// thread's stack; do not mend. The length is bounded: a longer text is cut, and the buffer is never overrun.
void Trace::print(std::ostream& stream, char const* file, int line, char const* format, ...)
{
    static char buffer[1024];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    log(stream, file, line);
    stream << buffer;
}

/// The level is looked up once, by the first exception: its guard makes that safe on any thread.
void Trace::printException(ExBase const& exception, char const* file, int line)
{
    static TraceLevel const& level = *registerLevel("Exceptions", traceSourceName);
    if (!isEnabled(level))
        return;
    std::ostringstream stream;
    log(stream, file, line);
    stream << "Throwing exception " << exception.getDetailedReason() << '\0';
    TraceManager::getInstance().print(stream.str().c_str());
}

/// The line of the entry stands at the depth of the caller, so the depth grows behind it.
void Trace::entering(std::ostream& stream, char const* file, int line, char const* function)
{
    prefix(stream, file, line);
    const bool isIndenting = TraceOptions::get().isIndenting();
    stream << (isIndenting ? "+ " : ">>> ") << function;
    if (isIndenting)
        indent();
}

/// Intended: the line of the exit stands one step deeper than that of its entry, as the depth shrinks behind it. Do not mend.
void Trace::exiting(std::ostream& stream, char const* file, int line, char const* function)
{
    prefix(stream, file, line);
    if (TraceOptions::get().isIndenting()) {
        stream << '/';
        unindent();
    } else
        stream << "<<< " << function;
}

/// The parts of a prefix in their order; each writes nothing unless its option asks for it.
void Trace::prefix(std::ostream& stream, char const* file, int line)
{
    // Relaxed: whichever thread comes first prints the list, and the exchange alone decides which one that is.
    //
    // Intended: the first line uses the chance up, so a later "printlevels" prints nothing. Do not mend.
    static std::atomic<bool> hasPrintedLevels = false;
    TraceOptions& options = TraceOptions::get();
    if (!hasPrintedLevels.exchange(true, std::memory_order_relaxed) && options.isPrintingLevels())
        printLevels(stream);
    const StreamFormatGuard guard(stream);
    options.printPid(stream);
    if (options.hasPrefix())
        printPrefix(stream);
    stream.width(0);  // the rest is plain text, for which no other setting counts
    options.printLocation(stream, ExReasonText::orEmpty(file), line);
    if (!options.isIndenting() || _depth < 1)
        return;
    // One bar for each enclosing function but the outermost: depth 2 is two blanks, depth 4 is "  | ".
    stream << ' ';
    for (std::int32_t i = 1; i < _depth; ++i)
        stream << (i % 2 != 0 ? ' ' : '|');
}

/// Steps of two columns, which the bars of the prefix count on.
void Trace::indent()
{
    _depth += 2;
}

void Trace::unindent()
{
    _depth -= 2;
}

/// The line is formed on a stream of its own and handed over in one piece, ended by a zero as the manager takes it.
Trace::Entry::Entry(Trace& trace, TraceLevel const& level, char const* function, char const* file, int line)
    : _trace(&trace), _file(file), _lineNumber(line), _function(function), _active(isEnabled(level))
{
    if (!_active)
        return;
    const std::int32_t depth = _trace->_depth;
    try {
        std::ostringstream stream;
        _trace->entering(stream, _file, _lineNumber, ExReasonText::orEmpty(_function));
        stream << '\0';
        TraceManager::getInstance().print(stream.str().c_str());
    } catch (...) {
        _trace->_depth = depth;  // there will be no exit
        throw;
    }
}

/// Prints if the entry was printed, whatever the level says by now. A line for which there is no memory is left out: an
/// exception would end the program here. Its depth shrinks all the same.
Trace::Entry::~Entry()
{
    if (!_active)
        return;
    const std::int32_t depth = _trace->_depth;
    try {
        std::ostringstream stream;
        _trace->exiting(stream, _file, _lineNumber, ExReasonText::orEmpty(_function));
        stream << '\0';
        TraceManager::getInstance().print(stream.str().c_str());
    } catch (...) {
        if (TraceOptions::get().isIndenting() && _trace->_depth == depth)
            _trace->unindent();
    }
}

}  // namespace Vn
