#!/bin/bash
# tools/test.sh [PRESET]...: installs what is missing and passes all tests, or those of the given presets.
#
#   release      GCC, optimised; also each header alone, and the library a second time, byte for byte the same
#   asan-ubsan   GCC's address and undefined-behaviour sanitizers
#   tsan         GCC's thread sanitizer
#   windows      cross-built by MinGW-w64, run under Wine
#   coverage     Clang, optimised, with branch coverage
#   bench        builds the benchmarks and runs none
#   fuzz         runs each fuzzer for five seconds
#   dev, clang   more presets of CMakePresets.json, which aren't among all
#   aarch64      the same; cross-built for this processor, run in QEMU with a suite as one process
#   s390x        the same; for a processor that is big-endian
#   riscv64      the same; tests of numbers and samplers alone
#   libcxx       the same; a later Clang with its own standard library and that one's checks
#
# Logs are in build/logs; Ctrl-C ends everything. A second run compiles nothing anew. The last line counts the tests:
# "N passed, M failed", and how many can't run in an emulator; exit code 0 if none failed, 2 if a package is missing and can't be
# installed here, else 1.
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
-h | --help)
    sed -n '2,/^set/s/^# \{0,1\}//p' tools/test.sh
    exit 0
    ;;
-*)
    echo "tools/test.sh: unknown option $1; tools/test.sh -h tells more" >&2
    exit 2
    ;;
esac
presets=("$@")
[ $# -gt 0 ] || presets=(release asan-ubsan tsan windows coverage bench fuzz)
for preset in "${presets[@]}"; do
    if ! grep -q "\"configurePreset\": \"$preset\"" CMakePresets.json; then
        echo "tools/test.sh: unknown preset $preset; tools/test.sh -h tells more" >&2
        exit 2
    fi
done
tools/setup.sh test
. tools/progress.sh

log=build/logs
passed=0
failed=0
left_out=0
# The date of the commit is that of the build, so that it can be repeated to the byte.
if [ -z "${SOURCE_DATE_EPOCH:-}" ] && epoch=$(git log -1 --format=%ct 2> /dev/null); then
    export SOURCE_DATE_EPOCH=$epoch
fi

# The steps of a preset, for the time that they take.
steps_of() {
    echo "$1.configure $1.build"
    case $1 in
    release) echo "$1.headers $1.again $1.test" ;;
    windows) echo "$1.headers $1.test" ;;
    libcxx) echo "$1.library $1.test" ;;
    bench) ;;
    fuzz) echo fuzzers ;;
    *) echo "$1.test" ;;
    esac
}

# Runs a step quietly; shows its log if it fails.
step() {
    if ! progress_step "$@"; then
        tail -n 200 "$log/$1.log"
        echo "FAILED: $1; the log is $log/$1.log"
        echo "$passed passed, $((failed + 1)) failed"
        exit 1
    fi
}

# Adds what ctest has counted; where a test is a whole suite, what the suites have counted.
count() {
    local line all bad
    if [ -f "build/$2/tests/launchers.stamp" ]; then
        read -r all bad < <(tools/countsuites.sh "build/$2/Testing/Temporary/LastTest.log")
        passed=$((passed + all))
        failed=$((failed + bad))
        left_out=$((left_out + $(grep -cE 'Not Run \(Disabled\)' "$1" || true)))
        return 0
    fi
    line=$(grep -E '^[0-9]+% tests passed' "$1" | tail -n 1)
    bad=$(sed -E 's/.* ([0-9]+) tests failed out of.*/\1/' <<< "$line")
    all=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<< "$line")
    passed=$((passed + all - bad))
    failed=$((failed + bad))
}

run_tests() {
    local preset=$1 tries=() reasons=tests/$1-left-out.txt
    # Where a container forbids fixed addresses, Wine fails to start one process in 8,000 (tools/wine.sh tells why), and a
    # test of Windows gets a second try. It is told which ones needed it.
    [ "$preset" != windows ] || setarch -R true 2> /dev/null || tries=(--repeat until-pass:2)
    # What isn't run is told, with the reason.
    if [ -f "$reasons" ]; then
        sed -n 's/^\([^#\t]*\)\t/   not run here: \1: /p' "$reasons"
        tries=(-E "$(awk -F '\t' '!/^#/ && NF > 1 { all = all (all == "" ? "" : "|") $1 } END { print all }' "$reasons")")
    fi
    if ! progress_step "$preset.test" "testing" ctest --preset "$preset" "${tries[@]}"; then
        grep -vE '^ +Start|   Passed ' "$log/$preset.test.log" | tail -n 200
    fi
    count "$log/$preset.test.log" "$preset"
    [ "$preset" != windows ] || grep -E '\*\*\*(Failed|Exception)' "$log/$preset.test.log" | sed 's/^/a try that failed: /' || true
}

# Builds the library from scratch, so that it is the compiler's work that is compared; once for the same library.
run_again() {
    local same=$log/$1.again.same sum
    sum=$(sha256sum build/"$1"/bin/libVNbase.so.*.*.*)
    [ ! -f "$same" ] || [ "$(< "$same")" != "$sum" ] || return 0
    CCACHE_DISABLE=1 step "$1.again" "compiling the library a second time, to compare" tools/reproduce.sh "$1"
    echo "$sum" > "$same"
}

# Five seconds for each fuzzer, two at a time, from its corpus; new inputs go beside it.
run_fuzzers() {
    local fuzzers=(build/fuzz/bin/fuzz*)
    step fuzzers "running ${#fuzzers[@]} fuzzers" xargs -P 2 -n 1 -a <(printf '%s\n' "${fuzzers[@]}") tools/fuzz.sh
    passed=$((passed + ${#fuzzers[@]}))
}

# shellcheck disable=SC2046  # the steps are words
progress_begin tools/test.sh $(for preset in "${presets[@]}"; do steps_of "$preset"; done)
for preset in "${presets[@]}"; do
    echo "== $preset ($(progress_total))"
    # The server ends with all else that this run has started; one that has been there before stays.
    [ "$preset" != windows ] || step windows.wine "starting Wine" tools/wineprefix.sh
    [ "$preset" != libcxx ] || step libcxx.library "looking for libc++" tools/libcxx.sh
    step "$preset.configure" "configuring" cmake --preset "$preset"
    step "$preset.build" "compiling" cmake --build --preset "$preset"
    case $preset in
    release | windows)
        step "$preset.headers" "compiling each public header by itself" \
            cmake --build --preset "$preset" --target all_verify_interface_header_sets
        ;;
    esac
    case $preset in
    release) [ -z "${SOURCE_DATE_EPOCH:-}" ] || run_again release ;;
    esac
    case $preset in
    bench) ;;
    fuzz) run_fuzzers ;;
    coverage)
        rm -rf build/coverage/profiles
        export LLVM_PROFILE_FILE="$PWD/build/coverage/profiles/%c%m.profraw"
        run_tests coverage
        unset LLVM_PROFILE_FILE
        # Some branches are taken by chance, so what is open is told and doesn't fail the run.
        tools/coverage.sh || echo "   branches are open that tests/coverage-exceptions.txt doesn't list, or the list is wrong"
        ;;
    *) run_tests "$preset" ;;
    esac
done
echo "== done in $(progress_clock $((SECONDS - progress_started)))"
progress_end
note=
[ "$left_out" = 0 ] || note=", $left_out not run under emulation: see tests/emulation.txt"
echo "$passed passed, $failed failed$note"
[ "$failed" = 0 ] && [ "$passed" -gt 0 ]
