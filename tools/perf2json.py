#!/usr/bin/env python3
"""perf2json.py [FILE]: turns the table of a timed run (PROGRAM -perf LIST, from FILE or the standard input) into the JSON
that Google Benchmark writes, for its compare.py and for plots:

    build/release/bin/groups -perf tests/groups/groups.perf | tools/perf2json.py > today.json
    compare.py benchmarks before.json today.json

A row becomes a benchmark of the group's name and arguments, with the average as real and processor time in seconds. Rows of
the same text are told apart as repetitions. Exit code 1 if there is no table or a row is none.
"""
import json
import re
import sys

HEADING = "Group Name              nbCycles   average time    options"
ROW = re.compile(r"(?P<name>\S+) +(?P<cycles>-?\d+) +(?P<average>-?\d+\.\d+|-?nan|-?inf)    (?P<arguments>.*)")


def rows_of(lines):
    """The rows behind the last heading, up to the next empty line."""
    starts = [number for number, line in enumerate(lines) if line == HEADING]
    if not starts:
        raise ValueError("there is no table")
    rows = lines[starts[-1] + 2:]
    while rows and not rows[0]:
        rows = rows[1:]
    for row in rows:
        if not row:
            return
        match = ROW.fullmatch(row)
        if match is None:
            raise ValueError("this is no row: " + row)
        yield match


def benchmark_of(row, seen):
    name = "/".join([row["name"], *row["arguments"].split()])
    repetition = seen[name] = seen.get(name, -1) + 1
    average = float(row["average"])
    return {"name": name, "run_name": name, "run_type": "iteration", "repetition_index": repetition, "threads": 1,
            "iterations": max(int(row["cycles"]), 0), "real_time": average, "cpu_time": average, "time_unit": "s"}


def main():
    try:
        stream = open(sys.argv[1], encoding="utf-8") if len(sys.argv) > 1 else sys.stdin
        seen = {}
        benchmarks = [benchmark_of(row, seen) for row in rows_of(stream.read().splitlines())]
    except (OSError, ValueError) as failure:
        sys.exit(f"perf2json.py: {failure}")
    print(json.dumps({"context": {"library": "VNbase"}, "benchmarks": benchmarks}, indent=2))


if __name__ == "__main__":
    main()
