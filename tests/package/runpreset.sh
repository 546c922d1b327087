#!/bin/sh
# runpreset.sh ROOT WORK_FOLDER: configures by the preset "install" where there is nothing but the compiler, CMake and make, and
# compiles one source. No other tool of this project is found, whether it is installed or not.
set -e
root=$1 work=$2
rm -rf "$work"
mkdir -p "$work/tools"
for tool in ar as c++ cmake g++ ld make nm objcopy objdump ranlib readelf strip sh; do
    ln -s "$(command -v "$tool")" "$work/tools/$tool"
done
cmake=$(command -v cmake)
cd "$root"
env -i PATH="$work/tools" "$cmake" --preset install -B "$work/build" > "$work/configure.log" 2>&1 ||
    { cat "$work/configure.log"; exit 1; }
grep -q '^CMAKE_GENERATOR:INTERNAL=Unix Makefiles$' "$work/build/CMakeCache.txt"
if grep -i 'ccache$' "$work/build/CMakeCache.txt"; then
    exit 1
fi
env -i PATH="$work/tools" make -C "$work/build/src/base" rational.cpp.o > "$work/build.log" 2>&1 ||
    { cat "$work/build.log"; exit 1; }
# Nothing of the tests and examples takes part.
test -f "$work/build/src/threadlog/Makefile"
test ! -e "$work/build/tests"
test ! -e "$work/build/examples"
