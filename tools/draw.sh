#!/bin/sh
# Draws docs/startup.svg from the running program: tools/draw.sh [FOLDER OF THE PROGRAM]
set -e
cd "$(dirname "$0")/.."
"${1:-build/release/bin}/inventory" --graph > docs/startup.dot
# Arrows that follow from others would only hide the rest.
tred docs/startup.dot | dot -Tsvg -Grankdir=RL -Nshape=box -Nstyle=rounded -Nfontname=sans-serif > docs/startup.svg
