#!/bin/bash
# Runs a fuzzer for a short while, from its corpus: tools/fuzz.sh build/fuzz/bin/NAME [SECONDS]. New inputs go to
# build/fuzz/found; what fails is written there and told. fuzz/NAME.dict has words that its inputs are made of, if there is one.
set -euo pipefail
cd "$(dirname "$0")/.."
name=$(basename "$1")
found="build/fuzz/found/$name"
mkdir -p "$found"
options=()
[ ! -f "fuzz/$name.dict" ] || options=("-dict=fuzz/$name.dict")
if ! output=$("$1" "$found" "fuzz/corpus/$name" "${options[@]}" -max_total_time="${2:-5}" -print_final_stats=1 \
    -artifact_prefix="build/fuzz/found/$name." 2>&1); then
    echo "$output" | tail -n 100
    echo "FAILED: $name"
    exit 1
fi
echo "passed: $name"
