# shellcheck shell=bash
# Long jobs as steps that tell how far they are, and that end as a whole. tools/run.sh and tools/test.sh source this in the
# project's folder; it is no program of its own.
#
#   progress_begin COMMAND STEP...          before the first step: tells the time that these steps will take
#   progress_step STEP TEXT COMMAND...      runs COMMAND, with its output in build/logs/STEP.log; returns its exit code
#   progress_end                            behind the last one
#
# A step runs in the background, in a process group of its own, while this shell waits for it or for the next look at its
# log. On a terminal the look comes every second and changes one line; elsewhere it comes every ten
# seconds, or VNBASE_PROGRESS_SECONDS, and adds one.
# The counter is that of the log itself, whether Ninja, ctest or apt has written it.
#
# Ctrl-C, or a kill of the script, ends everything below: the step's process group, and whatever has left it, as a server
# that Wine starts. All of them carry VNBASE_JOB in their environment, and are found by that.
#
# What a step has taken is kept in build/logs/times for the next run; before the first one tools/times.txt stands in.

progress_logs=build/logs
progress_job=        # process group of the step that runs
progress_ticker=     # the sleep until the next look
progress_id="$$.$(date +%s%N)"
progress_expected=0  # seconds that all steps will take, 0 if that isn't known
progress_planned=0   # seconds that those behind the running one will take

# Seconds as people read them: "0:07", "1:02:03".
progress_clock() {
    if [ "$1" -ge 3600 ]; then
        printf '%d:%02d:%02d' $(($1 / 3600)) $(($1 / 60 % 60)) $(($1 % 60))
    else
        printf '%d:%02d' $(($1 / 60)) $(($1 % 60))
    fi
}

# The last counter in a log, as "57/176": "[57/176] Building" of Ninja, " 57/176 Test #3" of ctest. A package that apt
# installs counts three times: fetched, unpacked, set up. Nothing if the log has none.
progress_counter() {
    [ -f "$1" ] || return 0
    awk '
        match($0, /^\[[0-9]+\/[0-9]+\]/) { counter = substr($0, 2, RLENGTH - 2) }
        $1 ~ /^[0-9]+\/[0-9]+$/ && $2 == "Test" { counter = $1 }
        / newly installed, / { all = 3 * $3; if ($4 != "newly") all = 3 * $1; fetched = 0 }
        /^Get:/ { ++fetched }
        /^(Unpacking|Setting up) / { ++placed }
        END {
            if (all > 0) {
                # What the cache has is not fetched.
                if (placed > 0) fetched = all / 3
                counter = (fetched + placed) "/" all
            }
            if (counter != "") print counter
        }' "$1"
}

# Seconds that a step took the last time, or else takes about; nothing if neither is known.
progress_time_of() {
    local files=(tools/times.txt)
    [ ! -f $progress_logs/times ] || files+=("$progress_logs/times")
    awk -v step="$1" '$1 == step { seconds = $2 } END { if (seconds != "") print seconds }' "${files[@]}"
}

progress_keep_time() {
    local times=$progress_logs/times
    { [ ! -f $times ] || grep -v "^$1 " $times; echo "$1 $2"; } > "$times.new" || true
    mv "$times.new" $times
}

# Process ids of all that runs below this shell, without what has been started to look for them. Those that only forked
# have this shell's own environment, and are in the step's process group.
progress_others() {
    local files
    files=$(env -u VNBASE_JOB grep -lsz "^VNBASE_JOB=.*$progress_id" /proc/[0-9]*/environ) || true
    sed -e 's|^/proc/||' -e 's|/environ$||' <<< "$files"
}

# Politely first: Ninja removes what is half-written. What has begun with more rights gets the signal from there.
progress_signal() {
    local others
    others=$(progress_others)
    # shellcheck disable=SC2086  # the ids are words
    kill "-$1" ${progress_job:+-$progress_job} $others 2> /dev/null || true
    [ -z "$progress_job" ] || [ -z "${progress_sudo:-}" ] || $progress_sudo -n kill "-$1" -- "-$progress_job" 2> /dev/null || true
}

progress_is_over() {
    { [ -z "$progress_job" ] || ! kill -0 "-$progress_job"; } 2> /dev/null && [ -z "$(progress_others)" ]
}

# Ends everything below this shell, whatever it is.
progress_end_all() {
    local signal i
    for signal in INT TERM KILL; do
        ! progress_is_over || return 0
        progress_signal $signal
        for ((i = 0; i < 30; i++)); do
            ! progress_is_over || return 0
            sleep 0.1
        done
    done
}

progress_stopped() {
    trap '' INT TERM HUP
    [ -z "$progress_ticker" ] || kill "$progress_ticker" 2> /dev/null || true
    progress_line ""
    progress_end_all
    echo "stopped by a signal, after $(progress_clock $((SECONDS - progress_started))); nothing is left running" >&2
    trap - EXIT "$1"
    kill "-$1" $$
}

# Changes the line on a terminal; adds one elsewhere.
progress_line() {
    if [ -t 1 ]; then
        printf '\r\033[K%.*s' $((${COLUMNS:-80} - 1)) "$1"
    elif [ -n "$1" ]; then
        echo "$1"
    fi
}

# "[57/176] 0:20 of about 1:02": by the counter once that says something, else by the last run.
progress_state() {
    local counter seconds=$2 expected=$3 place had all
    counter=$(progress_counter "$1")
    had=${counter%/*} all=${counter#*/}
    if [ -n "$counter" ] && [ "$seconds" -ge 5 ] && [ "$all" -gt 0 ] && [ $((had * 10)) -ge "$all" ]; then
        expected=$((seconds * all / had))
    fi
    place="${counter:+[$counter] }$(progress_clock "$seconds")"
    [ -z "$expected" ] || [ "$expected" -le "$seconds" ] || place="$place of about $(progress_clock "$expected")"
    echo "$place"
}

progress_begin() {
    local command=$1 step seconds
    shift
    mkdir -p $progress_logs
    export VNBASE_JOB="${VNBASE_JOB:+$VNBASE_JOB/}$progress_id"
    export NINJA_STATUS='[%f/%t] '
    progress_started=$SECONDS
    progress_planned=0
    for step in "$@"; do
        seconds=$(progress_time_of "$step")
        progress_planned=$((progress_planned + ${seconds:-0}))
    done
    progress_expected=$progress_planned
    [ $progress_expected -lt 5 ] ||
        echo "$command: about $(progress_clock $progress_expected) on two idle cores; Ctrl-C ends all of it"
    trap 'progress_stopped INT' INT
    trap 'progress_stopped TERM' TERM
    trap 'progress_stopped HUP' HUP
    trap 'progress_end_all' EXIT
}

progress_step() {
    local name=$1 text=$2 begun=$SECONDS every=${VNBASE_PROGRESS_SECONDS:-10} code ended expected
    shift 2
    expected=$(progress_time_of "$name")
    progress_planned=$((progress_planned - ${expected:-0}))
    [ ! -t 1 ] || every=1
    # A group of its own, which Ctrl-C doesn't reach by itself; progress_stopped() does.
    set -m
    "$@" > "$progress_logs/$name.log" 2>&1 < /dev/null &
    progress_job=$!
    set +m
    progress_line "   $text (the log is $progress_logs/$name.log)"
    while :; do
        sleep "$every" &
        progress_ticker=$!
        code=0
        wait -n -p ended $progress_job $progress_ticker 2> /dev/null || code=$?
        [ "$ended" != $progress_job ] || break
        progress_line "   $text $(progress_state "$progress_logs/$name.log" $((SECONDS - begun)) "$expected")"
    done
    kill $progress_ticker 2> /dev/null || true
    wait $progress_ticker 2> /dev/null || true
    progress_job='' progress_ticker=''
    progress_line ""
    [ $code != 0 ] || progress_keep_time "$name" $((SECONDS - begun))
    return $code
}

# "1:02 of about 40:00", for the whole.
progress_total() {
    local seconds=$((SECONDS - progress_started))
    local expected=$((seconds + progress_planned))
    progress_clock $seconds
    [ $progress_planned -lt 5 ] || printf ' of about %s' "$(progress_clock $expected)"
}

progress_end() {
    progress_end_all
    trap - EXIT INT TERM HUP
}
