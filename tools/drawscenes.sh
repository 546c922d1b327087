#!/bin/sh
# Draws docs/scenes-coin.png anew: the scenes of histograms as Coin, an Open Inventor of its own, renders them:
# tools/drawscenes.sh. Needs no screen; Mesa draws in software (Debian's libcoin-dev, libegl-dev and libgl1-mesa-dri).
set -e
cd "$(dirname "$0")/.."
cmake --preset release > /dev/null
cmake --build --preset release --target pointsets renderscenes > /dev/null
mkdir -p build/scenes
build/release/bin/pointsets --inventor build/scenes
build/release/bin/renderscenes build/scenes docs/scenes-coin.png
