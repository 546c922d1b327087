// Private to profconsolidator.cpp and profiler.cpp.
#pragma once

#include <ios>
#include <ostream>

namespace Vn
{

/// Writes the rows of a profile in fixed notation, adjusted left and filled with blanks.
///
///     ProfRows rows(stream);
///     rows.write("Total time:", 4.0);    // "        Total time:     4.000000" and a line end
///
/// The destructor restores the stream's flags, precision and fill character, also after an exception of the stream.
class ProfRows
{
public:
    explicit ProfRows(std::ostream& stream)
        : _stream(stream), _flags(stream.flags()), _precision(stream.precision()), _fill(stream.fill(' '))
    {
        stream.setf(std::ios_base::left, std::ios_base::adjustfield);
        stream.setf(std::ios_base::fixed, std::ios_base::floatfield);
    }

    ProfRows(ProfRows const&) = delete;
    ProfRows& operator=(ProfRows const&) = delete;

    ~ProfRows()
    {
        _stream.flags(_flags);
        _stream.precision(_precision);
        _stream.fill(_fill);
    }

    /// One row: eight blanks, the label in 16 columns, the value and a line end. Flushes the stream, as std::endl
    /// does.
    template <class Value>
    void write(char const* label, Value value)
    {
        _stream.width(8);  // applies to the next output only
        _stream << "";
        _stream.width(16);
        _stream << label << value << std::endl;
    }

    /// The five rows that a profiler and a consolidator have in common.
    template <class Profile>
    void writeSums(Profile const& profile)
    {
        write("Nb of cycles:", profile.cycles());
        write("Total time:", profile.totalTime());
        write("Average time:", profile.averageTime());
        write("Minimum time:", profile.minTime());
        write("Maximum time:", profile.maxTime());
    }

private:
    std::ostream& _stream;
    std::ios_base::fmtflags _flags;
    std::streamsize _precision;
    char _fill;
};

}  // namespace Vn
