#!/bin/sh
# runconsumer.sh BUILD_FOLDER WORK_FOLDER COMPILER TOOLCHAIN EMULATOR FLAGS: installs the build, builds the consumer
# against the installed tree through CMake and through pkg-config, and runs both. Empty TOOLCHAIN and EMULATOR: native.
set -e
build=$1 work=$2 compiler=$3 toolchain=$4 emulator=$5 flags=$6
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" > "$work/install.log"

libraries=$(dirname "$(find "$prefix" -name VNbase.pc)")/..
export LD_LIBRARY_PATH="$libraries" WINEPATH="$prefix/bin"
suffix=
[ -z "$toolchain" ] || suffix=.exe
T4Q_TEST_DIR=$work/log
export T4Q_TEST_DIR

echo "--- through CMake"
cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$flags" \
    ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} -DCMAKE_CXX_COMPILER="$compiler" > "$work/cmake.log"
cmake --build "$work/cmake" >> "$work/cmake.log" || { cat "$work/cmake.log"; exit 1; }
$emulator "$work/cmake/consumer$suffix"
$emulator "$work/cmake/logger$suffix"
grep -q "Warning: Client from a thread of the installed library" "$work/log/events.log"

echo "--- through pkg-config"
export PKG_CONFIG_LIBDIR="$libraries/pkgconfig"
test "$(pkg-config --modversion VNbase)" = 0.2.0
# shellcheck disable=SC2046  # the flags are words
"$compiler" -std=c++20 $flags "$here/consumer.cpp" -o "$work/consumer$suffix" $(pkg-config --cflags --libs VNbase)
$emulator "$work/consumer$suffix"
rm -f "$work/log/events.log"
# shellcheck disable=SC2046
"$compiler" -std=c++20 $flags "$here/logger.cpp" -o "$work/logger$suffix" $(pkg-config --cflags --libs VNthreadlog)
$emulator "$work/logger$suffix"
grep -q "Warning: Client from a thread of the installed library" "$work/log/events.log"
