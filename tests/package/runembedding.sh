#!/bin/sh
# runembedding.sh ROOT WORK_FOLDER COMPILER CCACHE: builds the library as a part of another project, which fetches the last
# commit from ROOT, and as one that has its sources in a folder. The same sources in the same place: with ccache the second
# build compiles nothing anew.
set -e
root=$1 work=$2 compiler=$3 ccache=$4
here=$(cd "$(dirname "$0")" && pwd)
commit=$(git -C "$root" rev-parse HEAD) || { echo "$root has no history to fetch from; clone it with git"; exit 1; }
rm -rf "$work"
mkdir -p "$work"
T4Q_TEST_DIR=$work/log
export T4Q_TEST_DIR

# build_and_run NAME [CMAKE_ARGUMENT]...
build_and_run() {
    name=$1
    shift
    echo "--- $name"
    cmake -S "$here/embedding" -B "$work/$name" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
        ${ccache:+-DCMAKE_CXX_COMPILER_LAUNCHER="$ccache"} -DVNBASE_FOLDER="$work/vnbase" "$@" \
        > "$work/$name.log" 2>&1 || { cat "$work/$name.log"; exit 1; }
    cmake --build "$work/$name" -j 2 >> "$work/$name.log" 2>&1 || { tail -n 60 "$work/$name.log"; exit 1; }
    "$work/$name/consumer"
    rm -rf "$work/log"
    "$work/$name/logger"
    grep -q "Warning: Client from a thread of the installed library" "$work/log/events.log"
    # A guest builds no tests and examples in somebody else's project.
    test -z "$(find "$work/$name" -name 'basetest*' -o -name '*inventory*')"
}

# By a URL, as from another machine.
repository=file://$(git -C "$root" rev-parse --path-format=absolute --git-common-dir)
build_and_run fetched -DVNBASE_REPOSITORY="$repository" -DVNBASE_COMMIT="$commit"
build_and_run subfolder
