#!/bin/bash
# Measures the library beside its peers and writes docs/performance.md: tools/bench.sh [PROGRAM]...
#
#   PROGRAM  one of build/bench/bin/bench*; all that compare, if none is named (about three minutes)
#
# Builds with the preset bench. Each program runs both sides in turn, in short rounds. The rows of all runs so far are kept in
# build/bench/rows; the page and its picture, docs/performance.svg, are made of them. Let the machine do nothing else.
set -euo pipefail
cd "$(dirname "$0")/.."

case ${1:-} in
-h | --help)
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
esac
programs=("$@")
# shellcheck disable=SC2207  # one word or none
[ $# -gt 0 ] || programs=(benchprocesses benchfiles benchlogsites benchthreadlog benchlogging benchsettings benchloading
    benchwholestart benchgrowth benchtimers benchexactnumbers benchnumbers benchsamplers benchfloatutil benchheadercost
    $([ "$(uname -m)" != x86_64 ] || echo benchfloatutilv2))

mkdir -p build/logs build/bench/rows
tools/setup.sh bench
echo "building (build/logs/bench.log)"
{ cmake --preset bench && cmake --build --preset bench; } > build/logs/bench.log 2>&1 ||
    { tail -n 50 build/logs/bench.log; exit 1; }

count=0
for program in "${programs[@]}"; do
    count=$((count + 1))
    [ -x "build/bench/bin/$program" ] || { echo "bench: there is no $program; tools/bench.sh -h helps" >&2; exit 2; }
    echo "[$count of ${#programs[@]}] $program ($SECONDS s so far)"
    rm -f "build/bench/rows/$program.new"
    if ! VNBASE_BENCH_ROWS="build/bench/rows/$program.new" "build/bench/bin/$program" > "build/logs/$program.log" 2>&1; then
        tail -n 20 "build/logs/$program.log"
        echo "bench: $program failed" >&2
        exit 1
    fi
    mv "build/bench/rows/$program.new" "build/bench/rows/$program.jsonl"
done
/usr/bin/python3 tools/benchpage.py build/bench/rows docs
echo "docs/performance.md and docs/performance.svg written in $SECONDS s"
