#include "exportformat.h"
#include "exporttext.h"

#include <algorithm>
#include <ostream>

namespace vnlog
{
namespace
{
/// The text as a field: in quotes where it has to be.
std::string quote(std::string_view text)
{
    if (text.find_first_of(",\"\r\n") == std::string_view::npos)
        return std::string(text);
    std::string field = "\"";
    for (const char character : text) {
        if (character == '"')
            field += '"';
        field += character;
    }
    return field + '"';
}

/// Most readers take a zero for the end.
std::string toField(std::string_view text)
{
    std::string whole = toUtf8(text);
    for (std::size_t at = whole.find('\0'); at != std::string::npos; at = whole.find('\0', at))
        whole.replace(at, 1, "\xef\xbf\xbd");
    return quote(whole);
}

class CsvFormat : public ExportFormat
{
public:
    explicit CsvFormat(std::ostream& stream) : _stream(stream)
    {
        _stream << "time,kind,level,thread,ticks,group_name,text,lost,file,line,lines,run,whole,bytes\r\n";
    }

    void add(Record const& record, Run const&) override
    {
        const std::string message = record.getMessage();
        const bool isExact = isUtf8(message) && message.find('\0') == std::string::npos;
        _stream << (record.time ? toTimeText(*record.time) : "") << ',' << getKindWord(record.kind) << ','
                << getLevelWord(record.level) << ',';
        if (record.hasStamp)
            _stream << record.thread << ',' << record.ticks << ',';
        else
            _stream << ",,";
        _stream << toField(record.group) << ',' << toField(record.text) << ',';
        if (record.kind == Kind::Overflow)
            _stream << record.lost;
        _stream << ',' << toField(record.file) << ',' << record.line << ',' << record.lines << ',' << record.run
                << ',' << (record.isWhole ? 1 : 0) << ',' << (isExact ? "" : toBase64(message)) << "\r\n";
    }

private:
    std::ostream& _stream;
};
}  // namespace

std::unique_ptr<ExportFormat> makeCsvFormat(std::ostream& stream)
{
    return std::make_unique<CsvFormat>(stream);
}

}  // namespace vnlog
