#!/bin/sh
# Draws docs/layers.svg from the includes of src/base: tools/drawlayers.sh
set -e
cd "$(dirname "$0")/.."
python3 tests/package/checkmap.py . --dot > docs/layers.dot
# Arrows that follow from others would only hide the rest.
tred docs/layers.dot | dot -Tsvg > docs/layers.svg
