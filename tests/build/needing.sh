#!/bin/sh
# Runs a test that needs programs. Without one of them the test is skipped; it fails where all tests have to run.
# Usage: needing.sh PROGRAM... -- COMMAND...
set -eu
while [ "$1" != -- ]; do
  command -v "$1" >/dev/null || {
    echo "$1 is not installed: scripts/setup check"
    [ -z "${VEXO_ALL_TESTS-}" ] || exit 1
    exit 77
  }
  shift
done
shift
exec "$@"
