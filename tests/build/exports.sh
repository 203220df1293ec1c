#!/bin/sh
# The interface of the built library: it exports exactly the names of the version script, these are exactly what
# the headers declare, and it needs nothing but the C library, its mathematics and Expat.
# Usage: exports.sh LIBRARY SOURCE_DIR
set -eu
library=$1
source=$2
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

differ() { # differ WHAT FILE FILE
  if ! diff "$2" "$3" >"$work/diff"; then
    echo "$1:"
    cat "$work/diff"
    status=1
  fi
}

sed -n 's/^ *\([A-Za-z_][A-Za-z0-9_]*\);$/\1/p' "$source/src/libvexo.map" | sort >"$work/listed"
nm -D --defined-only "$library" | awk '{ print $NF }' | sort >"$work/exported"
# Declarations: what is left of the headers without comments, preprocessor lines, linkage braces and record bodies.
cat "$source"/include/*.h | sed '/^ *#/d; s/extern "C" {//' | tr '\n' ' ' |
  sed -E 's,/\*([^*]|\*+[^*/])*\*+/,,g; s/\{[^{}]*\}//g' >"$work/text"
{
  grep -oE '[A-Za-z_][A-Za-z0-9_]* *\(' "$work/text" | tr -d ' ('
  grep -oE 'extern const float [a-z_]+' "$work/text" | sed 's/.* //'
} | sort -u >"$work/declared"
test -s "$work/listed" || { echo "no names in libvexo.map"; status=1; }
differ "in libvexo.map (<) or exported (>) only" "$work/listed" "$work/exported"
differ "in libvexo.map (<) or declared (>) only" "$work/listed" "$work/declared"

needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p')
test -n "$needed" || { echo "no dependencies read"; status=1; }
for name in $needed; do
  case $name in
  libc.so.6 | libm.so.6 | libexpat.so.1 | ld-linux-armhf.so.3) ;;
  *) echo "needs $name"; status=1 ;;
  esac
done
if nm -D --undefined-only "$library" | grep ' _Z'; then
  echo "needs the C++ symbols above"
  status=1
fi
exit $status
