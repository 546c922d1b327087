#!/bin/bash
# Reads the man pages of vnlog as man, mandoc and groff do, and completes as bash does: checkpages.sh PROGRAM COMMAND...
set -u
program=$1
shift
failures=0
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

quiet() {
    local output
    if ! output=$("$@" 2>&1 > /dev/null) || [ -n "$output" ]; then
        echo "$*: $output"
        failures=$((failures + 1))
    fi
}

# mandoc writes what it finds to the standard output.
lint() {
    mandoc -T lint "$1" >&2
}

# What is offered for the last of the words.
expect() {
    local expected=$1
    shift
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    _vnlog
    if [ "${COMPREPLY[*]}" != "$expected" ]; then
        echo "vnlog $*: '${COMPREPLY[*]}' and not '$expected'"
        failures=$((failures + 1))
    fi
}

for command; do
    page=$work/vnlog-$command.1
    "$program" "$command" "--help=man:vnlog-$command" > "$page" || failures=$((failures + 1))
    grep -q "^vnlog\\\\-$command \\\\- " "$page" || { echo "$command: no name"; failures=$((failures + 1)); }
    grep -q "^.fBvnlog $command.fR" "$page" || { echo "$command: no synopsis"; failures=$((failures + 1)); }
    quiet lint "$page"
    quiet groff -ww -man -T utf8 "$page"
    MAN_KEEP_FORMATTING='' LC_ALL=C.UTF-8 quiet man --warnings -l "$page"
done

"$program" --help=bash > "$work/completion" || failures=$((failures + 1))
quiet shellcheck -s bash "$work/completion"
# shellcheck source=/dev/null
. "$work/completion"
cd "$work" || exit 1
touch a.log
expect "show" sh
expect "--help" --he
expect "always never auto" show -c ""
expect "with" show -l Error -x w
expect "a.log" show a.l
expect "date ticks" merge -s ""
expect "a.log" stats -n 5 a
expect "" nosuch a
[ "$failures" = 0 ]
