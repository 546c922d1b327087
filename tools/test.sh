#!/bin/bash
# Installs what is missing and passes all tests: tools/test.sh [PRESET]...
# Without presets: release, asan-ubsan, tsan, windows, coverage (which is Clang's optimised tree as well), then the
# benchmarks are built and the fuzzers run for a short while. Ends with a line that counts the tests.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh test

presets=("$@")
[ $# -gt 0 ] || presets=(release asan-ubsan tsan windows coverage bench fuzz)
log=build/logs
mkdir -p "$log"
passed=0
failed=0
started=$SECONDS
# The date of the commit is that of the build, so that it can be repeated to the byte.
if [ -z "${SOURCE_DATE_EPOCH:-}" ] && epoch=$(git log -1 --format=%ct 2> /dev/null); then
    export SOURCE_DATE_EPOCH=$epoch
fi

# Runs a step quietly; shows its log if it fails.
step() {
    local name=$1
    shift
    if ! "$@" > "$log/$name.log" 2>&1; then
        tail -n 200 "$log/$name.log"
        echo "FAILED: $name"
        echo "$passed passed, $((failed + 1)) failed"
        exit 1
    fi
}

# Adds what ctest has counted.
count() {
    local line all bad
    line=$(grep -E '^[0-9]+% tests passed' "$1" | tail -n 1)
    bad=$(sed -E 's/.* ([0-9]+) tests failed out of.*/\1/' <<< "$line")
    all=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<< "$line")
    passed=$((passed + all - bad))
    failed=$((failed + bad))
}

run_tests() {
    local preset=$1 tries=()
    # Where a container forbids fixed addresses, Wine fails to start one process in 8,000 (tools/wine.sh tells why), and a
    # test of Windows gets a second try. It is told which ones needed it.
    [ "$preset" != windows ] || setarch -R true 2> /dev/null || tries=(--repeat until-pass:2)
    if ! ctest --preset "$preset" "${tries[@]}" > "$log/$preset.test.log" 2>&1; then
        grep -vE '^ +Start|   Passed ' "$log/$preset.test.log" | tail -n 200
    fi
    count "$log/$preset.test.log"
    [ "$preset" != windows ] || grep -E '\*\*\*(Failed|Exception)' "$log/$preset.test.log" | sed 's/^/a try that failed: /' || true
}

# Five seconds for each fuzzer, two at a time, from its corpus; new inputs go beside it.
run_fuzzers() {
    local fuzzers=(build/fuzz/bin/fuzz*)
    step fuzzers xargs -P 2 -n 1 tools/fuzz.sh <<< "${fuzzers[*]}"
    passed=$((passed + ${#fuzzers[@]}))
}

for preset in "${presets[@]}"; do
    echo "== $preset ($((SECONDS - started)) s)"
    if [ "$preset" = windows ]; then
        tools/wineprefix.sh
        trap 'tools/wineprefix.sh stop' EXIT
    fi
    step "$preset.configure" cmake --preset "$preset"
    step "$preset.build" cmake --build --preset "$preset"
    case $preset in
    release | windows)
        # Each public header by itself.
        step "$preset.headers" cmake --build --preset "$preset" --target all_verify_interface_header_sets
        ;;
    esac
    case $preset in
    release)
        # From scratch, so that it is the compiler's work that is compared.
        [ -z "${SOURCE_DATE_EPOCH:-}" ] || CCACHE_DISABLE=1 step "$preset.again" tools/reproduce.sh "$preset"
        ;;
    esac
    case $preset in
    bench) ;;
    fuzz) run_fuzzers ;;
    coverage)
        rm -rf build/coverage/profiles
        export LLVM_PROFILE_FILE="$PWD/build/coverage/profiles/%p-%m.profraw"
        run_tests coverage
        unset LLVM_PROFILE_FILE
        tools/coverage.sh
        ;;
    *) run_tests "$preset" ;;
    esac
done
echo "== done in $((SECONDS - started)) s"
echo "$passed passed, $failed failed"
[ "$failed" = 0 ] && [ "$passed" -gt 0 ]
