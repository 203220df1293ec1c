#!/bin/sh
# Makes the Debian packages, which must pass lintian, installs them into an empty system, and finds nothing left once
# they are removed.
# Usage: packages.sh BUILD_DIR VERSION
set -eu
[ "$(id -u)" -eq 0 ] || exec fakeroot "$0" "$@" # dpkg gives files away
version=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$1" && cpack -B "$work") >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
lintian --allow-root --fail-on error "$work"/*.deb
mkdir -p "$work/root/var/lib/dpkg/info" "$work/root/var/lib/dpkg/updates"
touch "$work/root/var/lib/dpkg/status"
files() { (cd "$work/root" && find . -path ./var -prune -o ! -type d -print -o -type d -print | sort); }

# The system is empty: no packages to depend on, and no shell to run ldconfig there.
apply() {
  dpkg --root="$work/root" --force-depends --force-script-chrootless "$@" >"$work/log" 2>&1 ||
    { cat "$work/log"; exit 1; }
}
files >"$work/before"
apply --install "$work"/*.deb
for name in usr/bin/vexo usr/include/vexo.h usr/share/man/man1/vexo.1.gz usr/share/doc/libvexo0/copyright; do
  test -s "$work/root/$name" || { echo "the packages lack $name"; exit 1; }
done
library=$(find "$work/root" -name libvexo.so.0)
test "$(LD_LIBRARY_PATH=${library%/*} "$work/root/usr/bin/vexo" --version)" = "vexo $version" ||
  { echo "the installed tool does not run"; exit 1; }
apply --purge vexo-tools libvexo-dev libvexo0
files | diff "$work/before" - || { echo "left behind"; exit 1; }
