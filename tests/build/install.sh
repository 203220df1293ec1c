#!/bin/sh
# Installs the build into an empty prefix, moves that elsewhere, and builds and runs the C example with what is there:
# through pkg-config and through CMake, as C99 and as C++17, against the shared library and the archive.
# Usage: install.sh BUILD_DIR SOURCE_DIR
set -eu
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/first" >"$work/log" || { cat "$work/log"; exit 1; }
mv "$work/first" "$work/root"
cd "$work"
grep -rlF "$work/first" root && { echo "the files above name the prefix"; exit 1; }
for file in bin/vexo include/vexo.h share/man/man1/vexo.1.gz share/bash-completion/completions/vexo; do
  test -s "root/$file" || { echo "no $file"; exit 1; }
done
pc=$(dirname "$(find root -name vexo.pc)")
lib=$(cd "$pc/.." && pwd)
test "$(readlink "$lib/libvexo.so")" = libvexo.so.0 || { echo "libvexo.so does not lead to libvexo.so.0"; exit 1; }
export PKG_CONFIG_PATH="$work/$pc"

run() { # run PROGRAM: calibrates the sample panel
  LD_LIBRARY_PATH=$lib "./$1" "$source/examples/sample-panel.xml" luts.txt | grep -q '^white: x 0\.3127, y 0\.329' ||
    { echo "$1 fails"; exit 1; }
}
for language in c++:c++17 c:c99; do
  flags="-x ${language%:*} -std=${language#*:} -pedantic -Wall -Wextra -Werror $source/examples/calibrate.c -x none"
  ${CC:-cc} $flags $(pkg-config --cflags --libs vexo) -o shared && run shared
  ${CC:-cc} $flags -static $(pkg-config --cflags --static --libs vexo) -o static && run static
done
ldd shared | grep -q 'libvexo\.so\.0' || { echo "shared is not linked to the shared library"; exit 1; }

for language in C CXX; do
  cat >CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.16)
project(user $language)
find_package(vexo 0.1 REQUIRED COMPONENTS static)
set_source_files_properties($source/examples/calibrate.c PROPERTIES LANGUAGE $language)
foreach(kind vexo vexo-static)
  add_executable(with-\${kind} $source/examples/calibrate.c)
  target_link_libraries(with-\${kind} PRIVATE vexo::\${kind})
endforeach()
END
  rm -rf user
  { cmake -G Ninja -B user -DCMAKE_PREFIX_PATH="$work/root" && cmake --build user; } >log 2>&1 || { cat log; exit 1; }
  run user/with-vexo
  run user/with-vexo-static
done
ldd user/with-vexo-static | grep libvexo && { echo "with-vexo-static needs the shared library"; exit 1; }
exit 0
