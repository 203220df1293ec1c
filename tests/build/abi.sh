#!/bin/sh
# The binary interface that the public headers declare, against the one kept in packaging/libvexo.abi. What may change
# is said in CONTRIBUTING.md. The headers' functions are given empty bodies, so that neither the compiler's options nor
# the library's inner types show.
# Usage: abi.sh SOURCE_DIR [update]
set -eu
source=$1
baseline=$source/packaging/libvexo.abi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir system
echo 'typedef struct _IO_FILE FILE;' >system/stdio.h # the C library's own affair
for header in "$source"/include/*.h; do
  sed -E ':a;N;$!ba;s,/\*([^*]|\*+[^*/])*\*+/,,g' "$header" |
    sed 's/);$/) { __builtin_trap(); }/; s/^extern const float \([a-z_]*\);/const float \1 = 1;/' >"${header##*/}"
  echo "#include \"${header##*/}\""
done >vexo.c
${CC:-cc} -std=c99 -g -fPIC -shared -w -isystem system vexo.c -o libvexo.so -Wl,-soname,libvexo.so.0 \
  -Wl,--version-script="$source/src/libvexo.map"
abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed --type-id-style hash \
  libvexo.so >now.abi
[ "${2-}" = update ] && cp now.abi "$baseline" && exit
abidiff "$baseline" libvexo.so || {
  echo "the binary interface differs from packaging/libvexo.abi; if that may be, run tests/build/abi.sh . update"
  exit 1
}
