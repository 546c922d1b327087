#!/bin/bash
# Reads the man pages of the example programs as man, mandoc and groff do, and their completions as bash does, and wants no
# word from any of them: checkpages.sh FOLDER PROGRAM...
set -u
folder=$1
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

for program; do
    page=$work/$program.1
    "$folder/$program" --help=man > "$page" || failures=$((failures + 1))
    grep -q '^\.SH OPTIONS' "$page" || { echo "$program: no page"; failures=$((failures + 1)); }
    quiet lint "$page"
    quiet groff -ww -man -T utf8 "$page"
    MAN_KEEP_FORMATTING='' LC_ALL=C.UTF-8 quiet man --warnings -l "$page"
    "$folder/$program" --help=bash > "$work/$program" || failures=$((failures + 1))
    quiet bash -n "$work/$program"
    quiet shellcheck -s bash "$work/$program"
done
[ $failures = 0 ]
