#!/bin/sh
# Installs what is missing, builds the library and its examples, and runs the inventory: tools/run.sh [ARGUMENT]...
# Without arguments it looks at this machine's documentation.
set -e
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/tools/setup.sh" run
(
    cd "$here"
    cmake --preset release -DVNBASE_BUILD_TESTS=OFF -B build/run > build-run.log 2>&1 || { cat build-run.log; exit 1; }
    cmake --build build/run >> build-run.log 2>&1 || { cat build-run.log; exit 1; }
    rm build-run.log
)
[ $# -gt 0 ] || set -- /usr/share/doc
exec "$here/build/run/bin/inventory" "$@"
