#!/bin/bash
# tools/run.sh [ARGUMENT]...: builds what is missing, and runs the inventory with these arguments, or on this machine's
# documentation without any.
#
# Installs the packages that are missing (tools/setup.sh run), builds the library and the one program, no tests, in
# build/run, and starts it. The second time it does so at once. Logs are in build/logs; Ctrl-C ends everything.
set -euo pipefail
from=$PWD
cd "$(dirname "$0")/.."
here=$PWD
program=build/run/bin/inventory

if [ "${1:-}" = -h ] || [ "${1:-}" = --help ]; then
    sed -n '2,/^set/s/^# \{0,1\}//p' tools/run.sh
    [ ! -x $program ] || { echo "The inventory:" && $program -h; }
    exit 0
fi
# The program's own output stays its own.
{
    tools/setup.sh run
    . tools/progress.sh
    failed() {
        tail -n 100 "build/logs/$1.log"
        echo "$2; the log is build/logs/$1.log"
        exit 1
    }
    # A copied folder keeps the paths of the one that it was copied from.
    isConfigured() {
        [ -f build/run/build.ninja ] && grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$here" build/run/CMakeCache.txt
    }
    steps=(run.build)
    isConfigured || steps=(run.configure run.build)
    what="compiling the library and the inventory"
    if [ -x $program ]; then
        what="compiling what has changed"
        progress_begin tools/run.sh
    else
        progress_begin tools/run.sh "${steps[@]}"
    fi
    isConfigured || progress_step run.configure "looking at the compiler" \
        cmake --preset release --fresh -B build/run -DVNBASE_BUILD_TESTS=OFF -DVNBASE_BUILD_PROGRAMS=OFF ||
        failed run.configure "CMake has failed"
    progress_step run.build "$what" \
        cmake --build build/run --target inventory || failed run.build "the build has failed"
    progress_end
} >&2
[ $# -gt 0 ] || set -- /usr/share/doc
cd "$from"
unset VNBASE_JOB
exec "$here/$program" "$@"
