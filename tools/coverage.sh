#!/bin/bash
# Reports the branch coverage of src/base and src/threadlog from the profiles that the tests of the preset `coverage` have left, and
# lists the branches and lines that no test has reached.
set -euo pipefail
cd "$(dirname "$0")/.."
profiles=build/coverage/profiles
merged=build/coverage/all.profdata
find "$profiles" -name '*.profraw' > build/coverage/profiles.txt
llvm-profdata-14 merge -sparse -f build/coverage/profiles.txt -o "$merged"
objects=(build/coverage/bin/libVNbase.so -object build/coverage/bin/libVNthreadlog.so)
for program in build/coverage/bin/*test; do
    objects+=(-object "$program")
done
# shellcheck disable=SC2046  # no file has a blank in its name
llvm-cov-14 export "${objects[@]}" -instr-profile="$merged" -skip-functions $(find src/base src/threadlog -name '*.cpp' -o -name '*.h' \
    -o -name '*.imp' | sort) > build/coverage/coverage.json 2> /dev/null
python3 tools/coverage.py build/coverage/coverage.json "$PWD"
