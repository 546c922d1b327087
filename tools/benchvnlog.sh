#!/bin/bash
# Measures vnlog beside what one would take instead: tools/benchvnlog.sh [MEGABYTES [FILES]]
#
#   MEGABYTES  size of a made-up log, 100 if not given
#   FILES      how many such logs are merged, 16 if not given; they take that much of the disk, in $TMPDIR
#
# Builds with the preset release. Each task is done by both sides in turn, three times, and the best time of each counts. The
# files are in the system's cache. A side that isn't installed is left out (packages: jq, lnav).
set -euo pipefail
cd "$(dirname "$0")/.."

case ${1:-} in
-h | --help)
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
esac
megabytes=${1:-100} files=${2:-16}

mkdir -p build/logs
tools/setup.sh bench
echo "building (build/logs/benchvnlog.log)"
{ cmake --preset release && cmake --build --preset release --target vnlog; } > build/logs/benchvnlog.log 2>&1 ||
    { tail -n 50 build/logs/benchvnlog.log; exit 1; }
vnlog=$PWD/build/release/programs/bin/vnlog
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C TZ=UTC0

# FILES logs of MEGABYTES each, whose lines lie between each other's; all of one second, so that ticks alone decide. A tenth of the
# lines are warnings or worse.
awk -v megabytes="$megabytes" -v files="$files" -v work="$work" 'BEGIN {
    srand(1)
    split("Net Ui Render Scene Io", groups)
    split("answer request frame buffer scene light sampler pass texture shader queue worker tile", words)
    split("Error Warning Warning Informational Informational Tracing Profiling Informational", levels)
    for (file = 0; file < files; ++file) {
        name = sprintf("%s/%02d.log", work, file)
        printf "===== Message Logger Startup =====\n===== Started on Sun Nov 22 17:17:56 2026\n\n" > name
        printf "===== Clock Frequency: 0.000000001\n" > name
        ticks = size = 0
        while (size < megabytes * 1000000) {
            ticks += 1 + int(rand() * 200000)
            level = rand() < 0.1 ? levels[1 + int(rand() * 3)] : levels[4 + int(rand() * 5)]
            upper = int(ticks / 4294967296)
            line = sprintf("%010d %010.0f (0x%08x) %s: %s %s %s %s %d", upper, ticks - upper * 4294967296, 6699 + int(rand() * 8),
                level, groups[1 + int(rand() * 5)], words[1 + int(rand() * 13)], words[1 + int(rand() * 13)],
                words[1 + int(rand() * 13)], rand() * 1000000)
            print line > name
            size += length(line) + 1
        }
        close(name)
    }
}'
log=$work/00.log
awk -F'[()]' 'NF > 2 { split($3, part, ": "); printf "{\"stamp\":\"%s\",\"thread\":\"%s\",\"level\":\"%s\",\"text\":\"%s\"}\n",
    $1, $2, substr(part[1], 2), part[2] }' "$log" > "$work/00.json"

# Seconds of the best of three runs of two commands in turn, "-" for one that isn't there.
best() {
    local side start end microseconds
    local -a least=(- -)
    for side in 0 1 0 1 0 1; do
        local command=$1
        [ $side = 0 ] || command=$2
        [ "$command" != - ] || continue
        start=${EPOCHREALTIME/./}
        # Into a pipe: grep stops at the first match if it sees /dev/null. It ends with 1 if it finds nothing.
        bash -c "$command" 2> /dev/null | cat > /dev/null || [ "${PIPESTATUS[0]}" = 1 ]
        end=${EPOCHREALTIME/./}
        microseconds=$((end - start))
        if [ "${least[side]}" = - ] || [ $microseconds -lt "${least[side]}" ]; then
            least[side]=$microseconds
        fi
    done
    echo "${least[@]}"
}

# A row: the task, the other side's name, our command, the other one's.
row() {
    local task=$1 name=$2 ours theirs
    shift 2
    command -v "${name%% *}" > /dev/null || set -- "$1" -
    read -r ours theirs <<< "$(best "$1" "$2")"
    if [ "$theirs" = - ]; then
        printf '| %s | %s | %d ms | not installed | |\n' "$task" "$name" $((ours / 1000))
    else
        printf '| %s | %s | %d ms | %d ms | %s |\n' "$task" "$name" $((ours / 1000)) $((theirs / 1000)) \
            "$(awk -v ours="$ours" -v theirs="$theirs" 'BEGIN { printf "%.3g", ours / theirs }')"
    fi
}

echo "one log of $megabytes MB, $files of them merged"
echo
echo '| task | beside | vnlog | the other | our time over theirs |'
echo '|---|---|---:|---:|---:|'
for name in grep lnav jq; do
    case $name in
    grep)
        none="grep -F 'no such text' '$log'"
        tenth="grep -E '^[0-9]{10} [0-9]{10} \(0x[0-9a-f]{8}\) (Error|Warning): ' '$log'"
        ;;
    lnav)
        none="lnav -n -c ':filter-in no such text' '$log'"
        tenth="lnav -n -c ':filter-in ^\\d{10} \\d{10} \\(0x[0-9a-f]{8}\\) (Error|Warning): ' '$log'"
        ;;
    jq)
        none="jq -c 'select(.text == \"no such text\")' '$work/00.json'"
        tenth="jq -c 'select(.level == \"Error\" or .level == \"Warning\")' '$work/00.json'"
        ;;
    esac
    row "a text that is nowhere" "$name" "'$vnlog' show -m 'no such text' '$log'" "$none"
    row "a tenth of the lines, by level" "$name" "'$vnlog' show -s ticks -l Warning '$log'" "$tenth"
done
row "merge of $files files" "sort -m" "'$vnlog' merge -n -s ticks '$work'/??.log" "sort -m -k1,2 '$work'/??.log"
