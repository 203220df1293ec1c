#!/bin/sh
# Compiled as in the build, but for a processor that can fuse a multiplication and an addition, no source of the library
# may do so: the product would not be rounded.
# Usage: no-fma.sh BUILD_DIR SOURCE_DIR
set -eu
commands=$1/compile_commands.json
status=0
for source in "$2"/src/*.cpp "$2"/src/base/*.cpp; do
  test -e "$source" || continue # no source there
  # One "command" line stands before the "file" line of each entry.
  command=$(grep -B1 "\"file\": \"$source\"" "$commands" | sed -n 's/^ *"command": "\(.*\) -o [^ ]* -c .*",$/\1/p' |
    sed 's/\\"/"/g')
  test -n "$command" || { echo "no compile command for $source"; exit 1; }
  assembly=$(sh -c "$command -O3 -march=haswell -S -o - '$source'")
  if echo "$assembly" | grep -E '\bv?fn?m(add|sub)[a-z0-9]*\b'; then
    echo "fused in $source"
    status=1
  fi
done
exit $status
