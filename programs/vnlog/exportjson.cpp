// One object a line. The fields' names are those of docs/export-logs.md, and lnav's format file (packaging/lnav) reads them.
#include "exportformat.h"
#include "exportjson_p.h"

#include <ostream>

namespace vnlog
{
namespace
{
Json makeDrawing(Record::Drawing const& drawing)
{
    Json json = {{"step", getStepWord(drawing.step)}};
    if (drawing.depth != TraceLine::notDrawn)
        json["depth"] = drawing.depth;
    if (!drawing.text.empty())
        json["text"] = drawing.text;
    if (!drawing.process.empty())
        json["process"] = drawing.process;
    if (!drawing.file.empty())
        json["source"] = drawing.file;
    if (drawing.line != 0)
        json["line"] = drawing.line;
    if (drawing.ended != 0)
        json["ended"] = drawing.ended;
    if (drawing.unseen != 0)
        json["unseen"] = drawing.unseen;
    return json;
}

class JsonFormat : public ExportFormat
{
public:
    explicit JsonFormat(std::ostream& stream) : _stream(stream) {}

    void add(Record const& record, Run const& run) override
    {
        Json json;
        json["time"] = record.nearTime ? Json(toTimeText(*record.nearTime)) : Json();
        if (!record.time)
            json["time_known"] = false;
        json["kind"] = getKindWord(record.kind);
        if (record.level >= 0)
            json["level"] = getLevelWord(record.level);
        if (record.hasStamp) {
            json["thread"] = record.thread;
            json["ticks"] = record.ticks;
        }
        if (!record.group.empty())
            json["group_name"] = record.group;
        json["text"] = record.text;
        if (record.kind == Kind::Overflow)
            json["lost"] = record.lost;
        if (record.kind == Kind::Started && run.nanoseconds > 0)
            json["tick_nanoseconds"] = run.nanoseconds;
        if (record.drawing.step != TraceStep::None)
            json["trace"] = makeDrawing(record.drawing);
        json["file"] = record.file;
        json["line"] = record.line;
        if (record.lines != 1)
            json["lines"] = record.lines;
        json["run"] = record.run;
        if (record.isFurther)
            json["further"] = true;
        if (!record.isWhole)
            json["whole"] = false;
        addBytes(json, "bytes", record.getMessage());
        addBytes(json, "file_bytes", record.file);
        _stream << toJsonText(json) << '\n';
    }

private:
    std::ostream& _stream;
};
}  // namespace

std::unique_ptr<ExportFormat> makeJsonFormat(std::ostream& stream)
{
    return std::make_unique<JsonFormat>(stream);
}

}  // namespace vnlog
