#!/bin/sh
# Draws the pictures that explain the start, the log, exact time and sampling anew, from what programs tell:
# tools/drawguide.sh
set -e
cd "$(dirname "$0")/.."
cmake --preset release > /dev/null
cmake --build --preset release --target inventory roaddata vnexacttime withchrono withtimecode > /dev/null
python3 tools/drawguide.py build/release/bin docs
