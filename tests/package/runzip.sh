#!/bin/sh
# runzip.sh PACKAGES WORK_FOLDER COMPILER TOOLCHAIN EMULATOR: unpacks the archive for Windows that tools/packages.sh has made in
# PACKAGES somewhere else, builds programs against it, and runs them.
set -e
packages=$1 work=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work/some where"
(cd "$work/some where" && cmake -E tar xf "$packages"/libvnbase-*-windows-x86_64.zip)
tree=$(echo "$work/some where"/libvnbase-*-windows-x86_64)
for file in bin/libVNbase.dll bin/libVNthreadlog.dll lib/libVNbase.dll.a lib/libVNthreadlog.dll.a \
    include/vn/base/ininitmgr.h lib/cmake/VNbase/VNbaseConfig.cmake share/vnbase/libVNbase.natvis README.txt; do
    test -f "$tree/$file" || { echo "the archive has no $file"; exit 1; }
done
grep -q libwinpthread-1.dll "$tree/README.txt"
"$here/consume.sh" "$tree" "$work/use" "$@" ""
