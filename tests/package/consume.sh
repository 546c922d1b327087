#!/bin/sh
# consume.sh PREFIX WORK_FOLDER COMPILER TOOLCHAIN EMULATOR FLAGS: builds the consumer against the tree that is installed at
# PREFIX, through CMake and through pkg-config, and runs the programs. Empty TOOLCHAIN and EMULATOR: native.
set -e
prefix=$1 work=$2 compiler=$3 toolchain=$4 emulator=$5 flags=$6
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"

pc=$(find "$prefix" -name VNbase.pc)
[ -f "$pc" ] || { echo "consume.sh: not one VNbase.pc in $prefix: $pc"; exit 1; }
libraries=$(cd "$(dirname "$pc")/.." && pwd)
export LD_LIBRARY_PATH="$libraries" WINEPATH="$prefix/bin"
suffix=
case $toolchain in *mingw*) suffix=.exe ;; esac
T4Q_TEST_DIR=$work/log
export T4Q_TEST_DIR

echo "--- $prefix through CMake"
cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$flags" \
    ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} -DCMAKE_CXX_COMPILER="$compiler" > "$work/cmake.log" 2>&1 ||
    { cat "$work/cmake.log"; exit 1; }
cmake --build "$work/cmake" >> "$work/cmake.log" || { cat "$work/cmake.log"; exit 1; }
$emulator "$work/cmake/consumer$suffix"
$emulator "$work/cmake/program$suffix"
grep -q "Warning: Client from a thread of the installed library" "$work/log/events.log"

echo "--- $prefix through pkg-config"
export PKG_CONFIG_LIBDIR="$libraries/pkgconfig"
test "$(pkg-config --modversion VNbase)" = 0.2.0
# The words are quoted as a shell reads them: a folder may have a blank in its name.
eval "\"\$compiler\" -std=c++20 $flags \"\$here/consumer.cpp\" -o \"\$work/consumer$suffix\" $(pkg-config --cflags --libs VNbase)"
$emulator "$work/consumer$suffix"
rm -f "$work/log/events.log"
eval "\"\$compiler\" -std=c++20 $flags \"\$here/logger.cpp\" -o \"\$work/logger$suffix\" $(pkg-config --cflags --libs VNthreadlog)"
$emulator "$work/logger$suffix"
grep -q "Warning: Client from a thread of the installed library" "$work/log/events.log"
