#!/bin/bash
# Builds the library of a preset a second time, in another folder, and compares the two byte for byte:
# tools/reproduce.sh PRESET. Both have to be of one date, so build the first one under the same SOURCE_DATE_EPOCH.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
: "${SOURCE_DATE_EPOCH:?has to be set, as it was for the first build}"
again="build/again/$preset"
rm -rf "$again"
cmake --preset "$preset" -B "$again" -DVNBASE_BUILD_TESTS=OFF -DVNBASE_BUILD_EXAMPLES=OFF -DVNBASE_BUILD_PROGRAMS=OFF
cmake --build "$again" --target VNbase
for first in build/"$preset"/bin/libVNbase.{so.*.*.*,dll}; do
    [ -f "$first" ] || continue
    cmp "$first" "$again/bin/$(basename "$first")"
    date=$(LC_ALL=C date -u -d "@$SOURCE_DATE_EPOCH" '+%b %e %Y')
    grep -q "$date" "$first" || { echo "the library isn't of $date"; exit 1; }
    # As the beginning of a path: in a clone at /src, "../../src/base" is none of it.
    ! LC_ALL=C grep -qaP "(^|[^A-Za-z0-9_./-])\\Q$PWD/\\E" "$first" || { echo "the library holds the path of its sources"; exit 1; }
    echo "identical: $first, $(stat -c %s "$first") bytes"
    exit 0
done
echo "no library in build/$preset"
exit 1
