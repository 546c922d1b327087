// OpenTelemetry's logs: resourceLogs > scopeLogs > logRecords, as its JSON encoding has them (64-bit numbers as texts, bytes
// as base64). A batch is one line. Records of one resource follow each other, so a batch ends where the run or the file
// changes.
//
// Severity numbers have ranges of four: TRACE 1, DEBUG 5, INFO 9, WARN 13, ERROR 17, FATAL 21. An internal error stands above
// a fatal one, as in the logger's own order. Profiling is no severity of the logger; it goes as DEBUG.
#include "exportformat.h"
#include "exportjson_p.h"

#include <array>
#include <ostream>
#include <utility>

namespace vnlog
{
namespace
{
constexpr std::array<int, 7> severityNumbers = {22, 21, 17, 13, 9, 1, 5};
constexpr std::size_t mostRecords = 512;
constexpr std::size_t mostBytes = 1024 * 1024;

Json makeText(std::string_view text)
{
    return {{"stringValue", text}};
}

Json makeNumber(std::uint64_t number)
{
    return {{"intValue", std::to_string(number)}};
}

void addAttribute(Json& attributes, char const* key, Json value)
{
    attributes.push_back({{"key", key}, {"value", std::move(value)}});
}

/// What a line of trace tells of the source; the names are OpenTelemetry's.
void addDrawing(Json& attributes, Record::Drawing const& drawing)
{
    if (drawing.step == TraceStep::None)
        return;
    addAttribute(attributes, "vn.trace.step", makeText(getStepWord(drawing.step)));
    if (drawing.step == TraceStep::Enter)
        addAttribute(attributes, "code.function", makeText(drawing.text));
    if (!drawing.file.empty())
        addAttribute(attributes, "code.filepath", makeText(drawing.file));
    if (drawing.line != 0)
        addAttribute(attributes, "code.lineno", makeNumber(static_cast<std::uint64_t>(drawing.line)));
    if (!drawing.process.empty())
        addAttribute(attributes, "process.pid", {{"intValue", drawing.process}});
}

Json makeAttributes(Record const& record)
{
    Json attributes = Json::array();
    addAttribute(attributes, "log.file.path", makeText(record.file));
    addAttribute(attributes, "vn.line", makeNumber(record.line));
    addAttribute(attributes, "vn.kind", makeText(getKindWord(record.kind)));
    if (!record.group.empty())
        addAttribute(attributes, "vn.group", makeText(record.group));
    if (record.hasStamp) {
        addAttribute(attributes, "thread.id", makeNumber(record.thread));
        addAttribute(attributes, "vn.ticks", {{"intValue", std::to_string(record.ticks)}});
    }
    if (record.kind == Kind::Overflow)
        addAttribute(attributes, "vn.lost", {{"intValue", std::to_string(record.lost)}});
    addDrawing(attributes, record.drawing);
    if (!record.isWhole)
        addAttribute(attributes, "vn.whole", {{"boolValue", false}});
    const std::string message = record.getMessage();
    if (!isUtf8(message))
        addAttribute(attributes, "vn.bytes", {{"bytesValue", toBase64(message)}});
    return attributes;
}

class OtlpFormat : public ExportFormat
{
public:
    OtlpFormat(std::ostream& stream, ExportNames names) : _stream(stream), _names(std::move(names)) {}

    void add(Record const& record, Run const& run) override
    {
        if (_records.size() >= mostRecords || _bytes >= mostBytes || record.run != _run || record.file != _file)
            writeBatch();
        if (_records.empty()) {
            _run = record.run;
            _file = record.file;
            _resource = makeResource(record, run);
        }
        _bytes += record.group.size() + record.text.size();
        _records.push_back(makeRecord(record));
    }

    void finish() override { writeBatch(); }

private:
    Json makeResource(Record const& record, Run const& run) const
    {
        Json attributes = Json::array();
        addAttribute(attributes, "service.name", makeText(getProgram(_names, record.file)));
        addAttribute(attributes, "service.instance.id", makeText(std::to_string(record.run)));
        if (run.started)
            addAttribute(attributes, "process.creation.time",
                         makeText(toTimeText(static_cast<std::int64_t>(*run.started) * 1'000'000'000)));
        return {{"attributes", attributes}};
    }

    /// 0 is the encoding's own word for an unknown time.
    Json makeRecord(Record const& record)
    {
        Json json;
        json["timeUnixNano"] = std::to_string(record.time.value_or(0));
        if (record.level >= 0) {
            json["severityNumber"] = severityNumbers[static_cast<std::size_t>(record.level)];
            json["severityText"] = getLevelWord(record.level);
        }
        json["body"] = makeText(record.getMessage());
        json["attributes"] = makeAttributes(record);
        return json;
    }

    void writeBatch()
    {
        if (_records.empty())
            return;
        const Json scope = {{"scope", {{"name", "vnlog"}}}, {"logRecords", std::move(_records)}};
        const Json batch = {{"resourceLogs", Json::array({{{"resource", std::move(_resource)},
                                                           {"scopeLogs", Json::array({scope})}}})}};
        _stream << toJsonText(batch) << '\n';
        _records = Json::array();
        _bytes = 0;
    }

    std::ostream& _stream;
    ExportNames _names;
    Json _resource;
    Json _records = Json::array();
    std::size_t _bytes = 0;  ///< of the texts in `_records`
    int _run = -1;
    std::string _file;
};
}  // namespace

std::unique_ptr<ExportFormat> makeOtlpFormat(std::ostream& stream, ExportNames names)
{
    return std::make_unique<OtlpFormat>(stream, std::move(names));
}

}  // namespace vnlog
