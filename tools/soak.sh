#!/bin/bash
# Long runs against a model of what must hold: tools/soak.sh [MINUTES] [WHAT]
#
#   MINUTES  for each part, 1 by default
#   WHAT     all (default), or one of: everything, kills, crashes, queue, load, processes, tree
#
# everything: processes with threads log into one file while processes are killed, stop and start, the disk fills up, the clock
#        jumps, the file is moved away, a library comes and goes and a process forks. Every message is accounted for, and memory
#        and descriptors stay flat. `tools/soak.sh 60 everything` is an hour of it.
# kills: processes write into one log and are killed at any moment, with lines of 300 and of 9,000 characters, on a disk
#        with room and on one that fills up again and again (which takes root's right to mount a small disk).
# crashes: processes whose threads log through the thread layer crash by each signal in turn, in a thread of the program and
#        in the one that writes the log.
# queue: one thread writes into a queue and another one reads it, beside a model.
# load:  a library with packages, groups, levels and environment objects comes and goes while another thread logs.
# processes: threads start programs by the thousand; no zombie and no descriptor may be left.
# tree:  a tree is copied, listed and emptied while another process swaps what is in it, 100,000 swaps in one run.
#
# Builds with the preset release if need be. Prints what each run counted; ends with 1 at the first thing that doesn't hold.
set -euo pipefail
cd "$(dirname "$0")/.."

case ${1:-} in
-h | --help)
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
esac
minutes=${1:-1}
what=${2:-all}
[[ $minutes =~ ^[0-9]+$ ]] || { echo "soak: $minutes is no number of minutes; tools/soak.sh -h helps" >&2; exit 2; }

parts=(everything kills crashes queue load processes tree)
[ "$what" = all ] || parts=("$what")
bin=build/release/bin
mkdir -p build/logs
tools/setup.sh test
echo "building (build/logs/soak.log)"
{ cmake --preset release && cmake --build --preset release --target soak; } > build/logs/soak.log 2>&1 ||
    { tail -n 50 build/logs/soak.log; exit 1; }

# repeat PROGRAM ARGUMENT...: again and again until the part's time is over.
repeat() {
    local until=$((SECONDS + $1)) result
    shift
    while [ $SECONDS -lt $until ]; do
        result=0
        "$bin/$1" "${@:2}" || result=$?
        [ $result != 77 ] || return 0
        [ $result = 0 ] || { echo "FAILED: $*"; exit 1; }
    done
}

for part in "${parts[@]}"; do
    echo "== $part"
    case $part in
    everything) "$bin/everything" 1000000 $((minutes * 60)) || { echo "FAILED: everything"; exit 1; } ;;
    kills)
        for run in "300" "9000" "300 full" "9000 full"; do
            # shellcheck disable=SC2086  # the arguments are words
            repeat $((minutes * 15)) killedwriters 1000 $run
        done
        ;;
    crashes)
        repeat $((minutes * 30)) threadcrashes 1000
        repeat $((minutes * 30)) threadcrashes 1000 reader
        ;;
    queue) repeat $((minutes * 60)) queuemodel 10000000 ;;
    load) repeat $((minutes * 60)) loadsoak 10000 ;;
    processes) repeat $((minutes * 60)) startsoak 4000 ;;
    tree) repeat $((minutes * 60)) treerace 100000 ;;
    *)
        echo "soak: nothing is called $part; tools/soak.sh -h helps" >&2
        exit 2
        ;;
    esac
done
echo "all of it holds"
