#!/bin/sh
# tableasjson.sh GROUPS PYTHON CONVERTER: holds the converter to a table that a program has made, and to what is no table.
set -e
printf 'endian 2 10\nendian 3 10\nerrors -1\n' > table.list
"$1" -perf table.list > table.txt
"$2" "$3" table.txt > table.json
"$2" "$3" < table.txt | cmp - table.json
"$2" - table.json <<'END'
import json
import sys
rows = json.load(open(sys.argv[1]))["benchmarks"]
told = [(row["name"], row["repetition_index"], row["iterations"], row["time_unit"]) for row in rows]
assert told == [("endian/10", 0, 2, "s"), ("endian/10", 1, 3, "s"), ("errors", 0, 0, "s")], told
assert all(row["real_time"] == row["cpu_time"] >= 0 for row in rows), rows
END
for wrong in "no table at all" ""; do
    ! echo "$wrong" | "$2" "$3" > wrong.json 2> wrong.txt
    grep -q '^perf2json.py: there is no table' wrong.txt
done
