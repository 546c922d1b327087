#!/bin/sh
# runconsumer.sh BUILD_FOLDER WORK_FOLDER COMPILER TOOLCHAIN EMULATOR FLAGS: installs the build below a folder with a blank in
# its name, and has consume.sh use it.
set -e
build=$1 work=$2
shift 2
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/a prefix" > "$work/install.log"
exec "$(dirname "$0")/consume.sh" "$work/a prefix" "$work/use" "$@"
