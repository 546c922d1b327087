#!/bin/bash
# Reports the branch coverage of src/base and src/threadlog from the profiles that the tests of the preset `coverage` have left.
# Exit code 1 if a branch was not taken that tests/coverage-exceptions.txt doesn't list, or if that list is wrong.
#
#     rm -rf build/coverage/profiles
#     LLVM_PROFILE_FILE=$PWD/build/coverage/profiles/%c%m.profraw ctest --preset coverage
#     tools/coverage.sh
#
# `%c` keeps the counters in the profile's file itself, so a process counts that crashes or is killed; `%m` makes one file for each
# program and library, which all their processes share.
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
python3 tools/coverage.py build/coverage/coverage.json "$PWD" tests/coverage-exceptions.txt
