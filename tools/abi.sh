#!/bin/bash
# tools/abi.sh [compare]        is the binary interface still that of the last release? Fails on what breaks, shows what was added
# tools/abi.sh release          at a release: writes it to abi/VERSION, of the version in CMakeLists.txt or the given one
# tools/abi.sh release VERSION
#
# Builds the libraries with debug information in build/abi, optimised as they are installed, by GCC. What the numbers
# promise is in docs/versions.md; what a test compares in each run is a debug tree with the same files.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
what=${1:-compare}
case $what in
compare | release) ;;
-h | --help)
    sed -n '2,/^set/s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
*)
    echo "tools/abi.sh takes compare or release; tools/abi.sh -h tells more" >&2
    exit 2
    ;;
esac
if ! command -v abidw > /dev/null; then
    echo "tools/abi.sh: abidw isn't installed; tools/setup.sh test installs it" >&2
    exit 2
fi
version=${2:-$(sed -n 's/^project(VNbase VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")}
if [[ ! $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]]; then
    echo "tools/abi.sh: a version is MAJOR.MINOR.PATCH, and not \"$version\"" >&2
    exit 2
fi
tree=$root/build/abi
mkdir -p "$root/build/logs"
log=$root/build/logs/abi.log
if ! { cmake -S "$root" -B "$tree" -G Ninja -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=-g \
    -DVNBASE_BUILD_TESTS=OFF -DVNBASE_BUILD_EXAMPLES=OFF -DVNBASE_BUILD_PROGRAMS=OFF &&
    cmake --build "$tree" --target VNbase VNthreadlog; } > "$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "tools/abi.sh: the build has failed; the log is $log" >&2
    exit 1
fi
status=0
for part in base threadlog; do
    library=$tree/bin/libVN$part.so
    if [ "$what" = release ]; then
        mkdir -p "$root/abi/$version"
        python3 "$root/tests/structure/abi.py" write "$library" "$root/src/$part" "$root/abi/$version/libVN$part"
    else
        python3 "$root/tests/structure/abi.py" compare "$library" "$root/src/$part" "$root/abi" || status=1
    fi
done
exit $status
