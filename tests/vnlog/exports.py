#!/usr/bin/env python3
"""Runs `vnlog export` and reads what it writes with other readers than its own.

exports.py VNLOG PROGRAMS FORMAT-FILE WORK TEST: PROGRAMS is the folder of the example programs, FORMAT-FILE lnav's. TEST is
a function of this file. The logs come from two programs, and one is made by hand with whatever a log may hold. What they
hold is read from their lines by expressions of this script's own.
"""
import base64
import csv
import datetime
import io
import itertools
import json
import os
import re
import shutil
import subprocess
import sys

VNLOG, PROGRAMS, FORMAT_FILE, WORK = sys.argv[1:5]
STAMPED = re.compile(rb"(\d{10}) (\d{10}) \(0x([0-9a-f]{8})\) "
                     rb"(Internal Error|Fatal Error|Error|Warning|Informational|Tracing|Profiling): (.*)", re.DOTALL)
BANNER = (b"===== Message Logger Startup =====\n===== Started on Sun Nov 22 17:20:21 2026\n\n"
          b"===== Clock Frequency: 0.000000001\n")
STARTED = int(datetime.datetime(2026, 11, 22, 17, 20, 21, tzinfo=datetime.timezone.utc).timestamp())
STOPPED = b"===== Message Logger Stopped =====\n"


def stamp(ticks, thread, level, message):
    return b"%010d %010d (0x%08x) %s: %s\n" % (ticks >> 32, ticks & 0xffffffff, thread, level.encode(), message)


def make_strange_log():
    """Whatever a log may hold, but CR LF."""
    return b"".join([
        b"before the first banner\n", BANNER,
        stamp(5, 0, "Internal Error", b"Core \xff\xfe not UTF-8"),
        stamp(2**32 + 5, 0x1a2b, "Warning", b'Cache "quoted", with commas; \xc3\xa9\xe2\x82\xac\xf0\x9f\x8c\x8d'),
        stamp(2**32 + 6, 1, "Informational", b"Event overflow [12]"),
        stamp(2**32 + 7, 1, "Profiling", b"Pass Profiler walk:"),
        b"        Nb of cycles:   3\n", b"        Total time  :   0.000000001\n", b"\n",
        stamp(2**32 + 8, 1, "Error", b"Tab\there, \x01\x1b[31m controls"),
        stamp(2**32 + 9, 1, "Fatal Error", b"single"),
        stamp(2**32 + 10, 1, "Tracing", b"+ f(int)"),
        stamp(2**32 + 11, 1, "Tracing", b"  | text"),
        b"from another program\n",
        stamp(2**32 + 12, 1, "Tracing", b"  + g"),
        stamp(2**32 + 13, 1, "Tracing", b"  | /"),
        b"behind an exit\n",
        stamp(2**32 + 14, 2, "Tracing", b"7844      main.cpp             (  78)   | + h"),
        stamp(2**32 + 15, 1, "Informational", b"Event overflow [3]"),
        stamp(2**32 + 16, 1, "Tracing", b"  | | + k"),
        stamp(2**32 + 17, 2, "Error", b"Zero \0 byte"),
        stamp(2**32 + 18, 2, "Error", b"-"), stamp(2**32 + 19, 2, "Error", b""),
        STOPPED, BANNER.replace(b"17:20:21", b"17:20:31"),
        stamp(1, 1, "Warning", b"Cache second run, " + b"x" * 40000), b"Event overflow [2]\n", b"a half line"])


def write(name, content):
    path = os.path.join(WORK, name)
    with open(path, "wb") as file:
        file.write(content)
    return path


def run(*command, code=0, **options):
    result = subprocess.run(command, capture_output=True, timeout=300, **options)
    assert result.returncode == code, (command, result.returncode, result.stderr)
    return result


def export(form, *arguments, code=0, **options):
    return run(VNLOG, "export", "--" + form, "-Z", "UTC", *arguments, code=code, **options).stdout


def log_of(program, *arguments, **environment):
    """The log that an example program writes, with all levels in one file."""
    path = os.path.join(WORK, program + ".log")
    variables = {"VN_LOG_" + level: path for level in ("INTERNAL_ERROR", "FATAL_ERROR", "RECOVERABLE_ERROR", "WARNING",
                                                       "INFORMATIONAL", "TRACING", "PROFILING")}
    run(os.path.join(PROGRAMS, program), *arguments,
        env={**os.environ, **variables, "VN_LOG_DEFAULT_LEVEL": "Informational", "TZ": "UTC", "VN_THREADLOG_WAIT": "all",
             **environment})
    return path


def make_logs():
    folder = os.path.join(WORK, "tree")
    os.makedirs(os.path.join(folder, "inner"))
    for name in ("a.txt", "b.txt", "inner/c.txt"):
        write(os.path.join("tree", name), b"some text\n")
    return [log_of("threadlog", "-q", "-t", "3", "-n", "40", VN_TRACE_OPTIONS="show=all,line,pid"),
            log_of("inventory", folder, VN_TRACE_OPTIONS="show=all"), write("strange.log", make_strange_log())]


def content(path):
    with open(path, "rb") as file:
        return file.read()


def messages_of(path):
    """(nanoseconds since 1970, ticks, thread, level, first line of the message) of each stamped line."""
    messages, started = [], None
    for line in content(path).split(b"\n"):
        if line.startswith(b"===== Started on "):
            date = datetime.datetime.strptime(line[17:].decode(), "%a %b %d %H:%M:%S %Y")
            started = int(date.replace(tzinfo=datetime.timezone.utc).timestamp())
        elif match := STAMPED.fullmatch(line):
            ticks = int(match[1]) << 32 | int(match[2])
            messages.append((started * 10**9 + ticks, ticks, int(match[3], 16), match[4].decode(), match[5]))
    assert messages
    return messages


def time_text(nanoseconds):
    second = datetime.datetime.fromtimestamp(nanoseconds // 10**9, datetime.timezone.utc)
    return second.strftime("%Y-%m-%dT%H:%M:%S.") + "%09dZ" % (nanoseconds % 10**9)


def first_line(text):
    return text.split(b"\n")[0]


def as_text(data):
    return data.decode(errors="replace")


def equal(got, expected):
    for i, (one, other) in enumerate(zip(got, expected)):
        assert one == other, "at %d: %r, expected %r" % (i, one, other)
    assert len(got) == len(expected), (len(got), len(expected))


def json_rows(text):
    return [json.loads(line) for line in text.decode().splitlines()]


def message_bytes(row):
    if "bytes" in row:
        return base64.b64decode(row["bytes"], validate=True)
    return (row["group_name"] + " " if "group_name" in row else "").encode() + row["text"].encode()


def testJsonHasEveryByteOfTheLog():
    for path in make_logs():
        for form in ([], ["--single"]):
            rows = json_rows(export("json", *form, path))
            lines = []
            for row in rows:
                prefix = b""
                if "ticks" in row and "further" not in row:
                    prefix = stamp(row["ticks"], row["thread"], row["level"], b"")[:-1]
                lines.append(prefix + message_bytes(row) + (b"" if row.get("whole") is False else b"\n"))
            assert b"".join(lines) == content(path), path
            number = 1
            for row in rows:
                assert (row["line"], row["file"]) == (number, path), row
                number += row.get("lines", 1)


def testJsonTellsTimesAndLevels():
    for path in make_logs():
        rows = [row for row in json_rows(export("json", path)) if "ticks" in row]
        equal([(row["time"], row["ticks"], row["thread"], row["level"], first_line(message_bytes(row))) for row in rows],
              [(time_text(message[0]), *message[1:]) for message in messages_of(path)])


def testJsonTellsCalls():
    path = write("strange.log", make_strange_log())
    steps = [(row["trace"]["step"], row["trace"].get("depth"), row["trace"].get("text")) for row in
             json_rows(export("json", path)) if "trace" in row]
    assert steps == [("enter", 0, "f(int)"), ("text", 1, "text\nfrom another program"), ("enter", 1, "g"),
                     ("leave", 2, None), ("enter", 2, "h"), ("enter", 3, "k")], steps
    rows = json_rows(export("json", path))
    assert [row["trace"] for row in rows if row.get("trace", {}).get("text") == "h"] == [
        {"step": "enter", "depth": 2, "text": "h", "process": "7844", "source": "main.cpp", "line": 78, "unseen": 2}]
    assert [row["lost"] for row in rows if row["kind"] == "lost"] == [12, 3, 2]
    assert [row["text"] for row in rows if row["kind"] == "plain"] == ["before the first banner", "behind an exit",
                                                                       "a half line"]
    assert [row["text"] for row in rows if row.get("level") == "Profiling"] == [
        "Profiler walk:\n        Nb of cycles:   3\n        Total time  :   0.000000001\n"]


def testJqReadsJson():
    path = make_logs()[0]
    program = '[inputs | select(.level == "Warning")] | length'
    counted = int(run("jq", "-n", program, input=export("json", path)).stdout)
    assert counted == sum(message[3] == "Warning" for message in messages_of(path)) == 120, counted


def testCsvIsReadByOthers():
    for path in make_logs():
        text = export("csv", path)
        assert text.count(b"\r\n") >= 1 and text.endswith(b"\r\n")
        reader = csv.DictReader(io.StringIO(text.decode(), newline=""), strict=True)
        rows = list(reader)
        assert all(None not in row and None not in row.values() for row in rows)
        stamped = [row for row in rows if row["ticks"]]

        def exact(row):
            if row["bytes"]:
                return base64.b64decode(row["bytes"], validate=True)
            return ((row["group_name"] + " " if row["group_name"] else "") + row["text"]).encode()
        equal([(row["time"], int(row["ticks"]), int(row["thread"]), row["level"], first_line(exact(row)))
               for row in stamped], [(time_text(message[0]), *message[1:]) for message in messages_of(path)])
    assert [row["lost"] for row in rows if row["kind"] == "lost"] == ["12", "3", "2"]
    assert [row["text"] for row in rows if "\0" in row["text"]] == []
    assert [row["whole"] for row in rows][-1] == "0"


def any_value(value):
    (kind, content_), = value.items()
    assert kind in ("stringValue", "intValue", "boolValue", "bytesValue"), value
    assert isinstance(content_, {"boolValue": bool}.get(kind, str)), value
    return int(content_) if kind == "intValue" else content_


def attributes(entries):
    assert all(set(entry) == {"key", "value"} for entry in entries)
    assert len({entry["key"] for entry in entries}) == len(entries)
    return {entry["key"]: any_value(entry["value"]) for entry in entries}


def testOtlpKeepsTheEncodingsRules():
    numbers = {"Internal Error": 22, "Fatal Error": 21, "Error": 17, "Warning": 13, "Informational": 9, "Tracing": 1,
               "Profiling": 5}
    for path in make_logs():
        records = []
        for batch in json_rows(export("otlp", "-p", "the program", path)):
            assert set(batch) == {"resourceLogs"}
            for logs in batch["resourceLogs"]:
                assert set(logs) == {"resource", "scopeLogs"}
                assert attributes(logs["resource"]["attributes"])["service.name"] == "the program"
                for scope in logs["scopeLogs"]:
                    assert set(scope) == {"scope", "logRecords"} and scope["scope"] == {"name": "vnlog"}
                    assert 0 < len(scope["logRecords"]) <= 512
                    records += scope["logRecords"]
        allowed = {"timeUnixNano", "severityNumber", "severityText", "body", "attributes"}
        assert all(set(record) <= allowed for record in records)
        stamped = []
        for record in records:
            told = attributes(record["attributes"])
            if "vn.ticks" in told:
                message = base64.b64decode(told["vn.bytes"]) if "vn.bytes" in told else any_value(record["body"]).encode()
                assert record["severityNumber"] == numbers[record["severityText"]]
                stamped.append((record["timeUnixNano"], told["vn.ticks"], told["thread.id"], record["severityText"],
                                first_line(message)))
        equal(stamped, [(str(message[0]), *message[1:]) for message in messages_of(path)])
    assert [record["timeUnixNano"] for record in records][0] == "0"
    called = [attributes(record["attributes"]) for record in records]
    assert [told["code.function"] for told in called if "code.function" in told] == ["f(int)", "g", "h", "k"]
    assert [told["code.lineno"] for told in called if "code.lineno" in told] == [78]
    assert [told["vn.lost"] for told in called if "vn.lost" in told] == [12, 3, 2]


def journal_value(value):
    return bytes(value) if isinstance(value, list) else value.encode()


def make_late_log():
    """The order of lines isn't that of their stamps while several threads log."""
    return write("late.log", BANNER + stamp(2**31, 1, "Warning", b"Cache first") + stamp(2**30, 2, "Warning", b"Cache late"))


def testTheJournalTakesItIn():
    for path in [make_late_log(), *make_logs()]:
        entries = write("entries.export", export("journal", "-p", "program", path))
        journal = os.path.join(WORK, "journal", os.path.basename(path))
        shutil.rmtree(os.path.dirname(journal), ignore_errors=True)
        os.makedirs(os.path.dirname(journal))
        run("/lib/systemd/systemd-journal-remote", "--output=" + journal + ".journal", entries)
        by_file = run("journalctl", "--file", journal + ".journal", "-o", "json", "--all", "--no-pager").stdout
        by_folder = run("journalctl", "--directory", os.path.dirname(journal), "-o", "json", "--all", "--no-pager").stdout
        rows = json_rows(by_file)
        equal(json_rows(by_folder), rows)
        assert len(rows) == len(json_rows(export("json", path)))
        assert {row["SYSLOG_IDENTIFIER"] for row in rows} == {"program"}
        stamped = [row for row in rows if "VN_TICKS" in row]
        got = sorted((int(row["__REALTIME_TIMESTAMP"]), int(row["VN_TICKS"]), int(row["TID"]), row["VN_LEVEL"],
                      first_line(journal_value(row["MESSAGE"]))) for row in stamped)
        equal(got, sorted((message[0] // 1000, *message[1:]) for message in messages_of(path)))
        errors = run("journalctl", "--file", journal + ".journal", "-p", "err", "-o", "json", "--all", "--no-pager")
        assert {row["VN_LEVEL"] for row in json_rows(errors.stdout)} == {
            message[3] for message in messages_of(path) if "Error" in message[3]}
        run("journalctl", "--verify", "--file", journal + ".journal")
    boots = {row["_BOOT_ID"] for row in rows}
    assert len(boots) == 3, boots
    assert [row["CODE_FUNC"] for row in rows if "CODE_FUNC" in row] == ["f(int)", "g", "h", "k"]
    assert [row["CODE_LINE"] for row in rows if "CODE_LINE" in row] == ["78"]
    assert [row["VN_TIME"] for row in rows if row["VN_KIND"] == "plain"] == ["unknown"] * 3


def trace_events(*paths):
    trace = json.loads(export("chrome-trace", *paths))
    assert set(trace) == {"displayTimeUnit", "otherData", "traceEvents"}
    needed = {"M": {"name", "args"}, "B": {"name", "ts"}, "E": {"ts"}, "i": {"name", "ts", "s"}, "C": {"name", "ts", "args"}}
    for event in trace["traceEvents"]:
        assert needed[event["ph"]] <= set(event), event
        assert isinstance(event["pid"], int) and isinstance(event["tid"], int), event
        assert isinstance(event.get("ts", 0.0), (int, float)), event
        assert event.get("s", "t") in "tpg" and event.get("cname", "bad") in ("bad", "terrible"), event
    return trace["traceEvents"]


def calls_of(events):
    """(thread, name, begin, end) of the durations, as a viewer pairs them; all have to be whole."""
    stacks, calls, last = {}, [], {}
    for event in events:
        key = event["pid"], event["tid"]
        if event["ph"] in "BEi":
            assert event["ts"] >= last.get(key, event["ts"]), event
            last[key] = event["ts"]
        if event["ph"] == "B":
            stacks.setdefault(key, []).append(event)
        elif event["ph"] == "E":
            begin = stacks[key].pop()
            calls.append((key, begin["name"], begin["ts"], event["ts"]))
    assert not any(stacks.values()), stacks
    return calls


def testTraceEventsPairUp():
    threads, folders, strange = make_logs()
    events = trace_events(threads)
    calls = calls_of(events)
    assert [name for _, name, _, _ in calls] == ["work"] * 3 and len({key for key, *_ in calls}) == 3
    for key, _, begin, end in calls:
        marks = [event for event in events if event["ph"] == "i" and (event["pid"], event["tid"]) == key]
        assert len(marks) == 120 and all(begin <= mark["ts"] <= end for mark in marks)
    ticks = sorted(message[1] for message in messages_of(threads))
    assert sorted(round(event["ts"] * 1000) for event in events if "ts" in event and "tid" in event
                  and event["name" if "name" in event else "ph"] != STOPPED.decode().strip()) == ticks

    calls = calls_of(trace_events(folders))
    text = content(folders)
    assert len(calls) == len(re.findall(rb"Tracing: (?:  (?:\| )*)?\+ ", text)) >= 5, calls
    outer = [call for call in calls if call[1] == "scan"]
    assert len(outer) == 1
    assert all(outer[0][2] <= begin <= end <= outer[0][3] for _, _, begin, end in calls)

    events = trace_events(strange)
    names = sorted(name for _, name, _, _ in calls_of(events))
    assert names == ["?"] * 4 + ["f(int)", "g", "h", "k"], names  # 2 around h, 2 around k
    losses = [event for event in events if event.get("cat") == "lost"]
    assert [(event["name"], event["args"]["lost"], event["s"], event["cname"]) for event in losses] == [
        ("Event overflow [12]", 12, "p", "terrible"), ("Event overflow [3]", 3, "p", "terrible"),
        ("Event overflow [2]", 2, "p", "terrible")]
    assert [event["args"]["lost"] for event in events if event["ph"] == "C"] == [12, 15, 2]
    names = [event["args"]["name"] for event in events if event["name" if "name" in event else "ph"] == "process_name"]
    assert names == [strange + part for part in (", before the first start", ", run 1", ", run 2")], names


def testFilesShareOneClock():
    first = write("first.log", BANNER + stamp(7, 1, "Warning", b"A one"))
    second = write("second.log", BANNER.replace(b"17:20:21", b"17:20:19") + stamp(3, 1, "Warning", b"B two"))
    events = trace_events(first, second)
    assert [(event["pid"], event["ts"]) for event in events if event["ph"] == "i"] == [(1, 2000000.007), (2, 0.003)]


def testLnavReadsJson():
    formats = os.path.join(WORK, "lnav", "formats", "vn")
    os.makedirs(formats, exist_ok=True)
    shutil.copy(FORMAT_FILE, formats)
    environment = {**os.environ, "HOME": os.path.join(WORK, "lnavhome"), "TZ": "UTC"}
    os.makedirs(os.path.join(WORK, "lnavhome"), exist_ok=True)

    def lnav(*arguments):
        result = run("lnav", "-n", "-N", "-I", os.path.join(WORK, "lnav"), *arguments, env=environment)
        assert b"error" not in result.stderr, result.stderr
        return result.stdout.decode(errors="replace")
    assert run("lnav", "-W", "-I", os.path.join(WORK, "lnav"), "-C", env=environment).stderr == b""
    levels = {"Internal Error": "critical", "Fatal Error": "fatal", "Error": "error", "Warning": "warning",
              "Informational": "info", "Tracing": "trace", "Profiling": "stats"}
    for path in [make_late_log(), *make_logs()]:
        shown = write("shown.json", export("json", path))
        query = (";select log_time, log_level, log_opid, thread, ticks, group_name, kind from vn_log "
                 "where ticks is not null order by line")
        rows = list(csv.DictReader(io.StringIO(lnav("-c", query, "-c", ":write-csv-to -", shown))))
        assert rows, path
        # A line of an earlier time than the one before, as another thread's may be, gets the time of that one in lnav.
        times = itertools.accumulate((message[0] for message in messages_of(path)), max)
        equal([(row["log_time"], row["log_level"], int(row["thread"]), int(row["log_opid"]), int(row["ticks"]))
               for row in rows],
              [(time_text(time)[:23].replace("T", " "), levels[message[3]], message[2], message[2], message[1])
               for time, message in zip(times, messages_of(path))])
    groups = list(csv.DictReader(io.StringIO(lnav(
        "-c", ";select group_name, count(*) as lines, sum(lost) as lost from vn_log group by group_name order by group_name",
        "-c", ":write-csv-to -", shown))))
    assert [row["lines"] for row in groups if row["group_name"] == "Cache"] == ["2"], groups
    # What has no time of its own is shown all the same.
    assert "from another program" in lnav(shown) and "behind an exit" in lnav(shown) and "a half line" in lnav(shown)


def testLineEndsOfWindowsAreNone():
    unix = write("unix.log", make_strange_log())
    windows = write("windows.log", make_strange_log().replace(b"\n", b"\r\n"))
    for form in ("json", "csv", "otlp", "chrome-trace"):
        assert export(form, unix).replace(b"unix", b"windows") == export(form, windows), form


def testStandardInputIsReadAsFilesAre():
    path = write("strange.log", make_strange_log())
    for form in ("json", "csv"):
        assert export(form, input=content(path)) == export(form, path).replace(path.encode(), b"-"), form


def testNoInputIsWrittenOver():
    path = write("strange.log", make_strange_log())
    os.link(path, os.path.join(WORK, "other name"))
    for output in (path, os.path.join(WORK, "other name")):
        message = run(VNLOG, "export", "--json", "-o", output, path, code=1).stderr
        assert message == b"vnlog: %s is the output as well; write to another file\n" % path.encode(), message
        assert content(path) == make_strange_log()
    with open(path, "ab") as stream:
        result = subprocess.run([VNLOG, "export", "--json", path], stdout=stream, stderr=subprocess.PIPE, timeout=300)
    assert result.returncode == 1 and content(path) == make_strange_log()
    output = os.path.join(WORK, "output")
    assert export("csv", "-o", output, path) == b"" and content(output) == export("csv", path)


def testWrongUseAndFailuresAreTold():
    path = write("strange.log", make_strange_log())
    plain = write("plain.log", b"no stamp\n")
    for arguments, code, message in (
            ((path,), 2, b"vnlog: which form? One of --chrome-trace, --csv, --journal, --json and --otlp; "
                         b"vnlog -h tells more\n"),
            (("--json", "--csv", path), 2, b"vnlog: only one form at a time; vnlog -h tells more\n"),
            (("--json", "-Z", "Nowhere", path), 2, b"vnlog export: -Z takes local, UTC, an offset as +05:30, or a zone "
                                                   b"that the system knows, not 'Nowhere'; vnlog export -h tells more\n"),
            (("--json", "-o", WORK, path), 1, b"vnlog: %s can't be written\n" % WORK.encode()),
            (("--chrome-trace", "-o", os.devnull, plain), 1,
             b"vnlog: %s has no line with a time stamp, so there is nothing to draw; it was logged under "
             b"VN_LOG_DISABLE_TIMESTAMPS, or isn't a log\n"
             b"vnlog: records without a time of their own: 1; each stands at the time of the one before it\n" %
             plain.encode())):
        result = run(VNLOG, "export", *arguments, code=code)
        assert result.stderr == message, result.stderr
    result = run(VNLOG, "export", "--json", path)
    assert result.stderr == (b"vnlog: texts with bytes that are not UTF-8: 1; U+FFFD stands for these, and the exact bytes "
                             b"stand beside, in base64\n"), result.stderr
    missing = run(VNLOG, "export", "--json", os.path.join(WORK, "missing"), code=1).stderr
    assert missing == b"vnlog: cannot open '%s': No such file or directory\n" % os.path.join(WORK, "missing").encode(), missing
    with open("/dev/full", "wb") as full:
        result = subprocess.run([VNLOG, "export", "--json", path], stdout=full, stderr=subprocess.PIPE, timeout=300)
    assert (result.returncode, result.stderr) == (1, b"vnlog: standard output can't be written\n"), result


def testMemoryStaysFlat():
    """The peak of the program for a log ten times as long is about the same, in each form."""
    def peak(form, path):
        with open(os.devnull, "wb") as null:
            process = subprocess.Popen([VNLOG, "export", "--" + form, path], stdout=null, stderr=null)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        assert process.returncode == 0, form
        return usage.ru_maxrss
    body = b"".join(stamp(i, i % 4, "Warning", b"Cache line %d\nsecond line" % i) for i in range(2000))
    small, large = write("small.log", BANNER + body), write("large.log", BANNER + body * 10)
    for form in ("json", "csv", "otlp", "journal", "chrome-trace"):
        sizes = peak(form, small), peak(form, large)
        assert sizes[1] < sizes[0] + 4096, (form, sizes)


if __name__ == "__main__":
    test = sys.argv[5]
    WORK = os.path.join(WORK, test)
    shutil.rmtree(WORK, ignore_errors=True)
    os.makedirs(WORK)
    globals()[test]()
    shutil.rmtree(WORK)
