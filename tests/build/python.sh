#!/bin/sh
# The Python example writes what the tool writes.
# Usage: python.sh SOURCE_DIR TOOL LIBRARY
set -eu
panel=$1/examples/sample-panel.xml
tool=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$tool" lut3d identity "$work/coarse.cube" --size 17
"$1/examples/calibrate.py" "$3" "$panel" "$work/luts.txt" "$work/coarse.cube" "$work/fine.cube"
"$tool" calibrate "$panel" --recipe aligned -o - 2>/dev/null | cmp - "$work/luts.txt"
"$tool" lut3d convert "$work/coarse.cube" "$work/expected.cube" --size 33
cmp "$work/expected.cube" "$work/fine.cube"
