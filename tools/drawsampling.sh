#!/bin/sh
# Draws the pictures of docs/sampling.md and the README anew, from the library: tools/drawsampling.sh
set -e
cd "$(dirname "$0")/.."
cmake --preset release > /dev/null
cmake --build --preset release --target pointsets skylight > /dev/null
build/release/bin/pointsets docs
build/release/bin/skylight -q -w 360 -n 256 -o docs/skylight.png -H build/skylight > /dev/null
build/release/bin/skylight -q -t
