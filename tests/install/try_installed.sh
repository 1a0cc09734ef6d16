#!/bin/sh
# SPDX-License-Identifier: MIT
# try_installed.sh ROOT PREFIX WORK: checks what stands installed below ROOT at PREFIX as an integrator would, with the
# README's own program: found by pkg-config and by CMake, compiled, and run under the installed virtual terminal.
set -eu
readme=$(dirname "$0")/../../README.md
root=$1 prefix=$1$2 work=$3

fail() { echo "try_installed: $*" >&2; exit 1; }

rm -rf "$work"
mkdir -p "$work/cmake"
awk '/^```c$/ {inside = 1; next} /^```/ {if (inside) exit} inside' "$readme" >"$work/program.c"
grep -q 'int main' "$work/program.c" || fail "README.md has no program in C"

library_dir=$(dirname "$(find "$prefix/lib" -name libgwq.so)")
export PKG_CONFIG_SYSROOT_DIR="$root" PKG_CONFIG_LIBDIR="$library_dir/pkgconfig"
export PKG_CONFIG_ALLOW_SYSTEM_CFLAGS=1 PKG_CONFIG_ALLOW_SYSTEM_LIBS=1

# Every header that the list of exports names is there.
grep -o '"header": "[^"]*"' "$prefix/share/gwq/interface.json" | cut -d '"' -f 4 | sort -u >"$work/headers.txt"
[ -s "$work/headers.txt" ] || fail "the list of exports is empty"
while read -r header; do
  [ -f "$prefix/include/$header" ] || fail "$header is missing"
done <"$work/headers.txt"

# shellcheck disable=SC2046  # flags are meant to be split
${CC:-cc} -std=c11 -Wall -Wextra -Werror $(pkg-config --cflags gwq) "$work/program.c" $(pkg-config --libs gwq) \
  -o "$work/program"

# A program's own headers of the names of ours, in a folder that is searched after ours.
mkdir -p "$work/own"
echo '#define OWN_STATUS 1' >"$work/own/status.h"
echo '#define OWN_EXPORT 1' >"$work/own/export.h"
printf '#include <gwq/gwq.h>\n#include "export.h"\n#include "status.h"\nint own = OWN_STATUS + OWN_EXPORT;\n' >"$work/shadow.c"
# shellcheck disable=SC2046
${CC:-cc} -std=c11 -fsyntax-only $(pkg-config --cflags gwq) -I"$work/own" "$work/shadow.c" || fail "our headers hide a program's own"

cat >"$work/program_by_object.cpp" <<'END'
#include <gwq/gwq.hpp>
#include <iostream>
int main() { std::cout << gwq::client::Terminal().Describe() << "\n"; }
END
# shellcheck disable=SC2046
${CXX:-c++} -std=c++17 -Wall -Wextra -Werror $(pkg-config --cflags gwq) "$work/program_by_object.cpp" \
  $(pkg-config --libs gwq) -o "$work/program_by_object"

cat >"$work/cmake/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(integrator LANGUAGES C)
find_package(gwq 1.0 REQUIRED)
add_executable(program_by_cmake ../program.c)
target_link_libraries(program_by_cmake PRIVATE gwq::gwq)
END
build_by_cmake() {
  cmake -S "$work/cmake" -B "$work/cmake/build" -DCMAKE_PREFIX_PATH="$prefix" && cmake --build "$work/cmake/build"
}
build_by_cmake >"$work/cmake.txt" 2>&1 || { cat "$work/cmake.txt"; fail "CMake's way"; }
grep -q "gwq_DIR:PATH=$root" "$work/cmake/build/CMakeCache.txt" || fail "CMake found another installation"

# The examples, from where a package puts them.
examples=$prefix/share/doc/libgwq-doc/examples
if [ -d "$examples" ]; then
  build_examples() {
    cmake -S "$examples" -B "$work/examples" -DCMAKE_PREFIX_PATH="$prefix" && cmake --build "$work/examples" --parallel 2
  }
  build_examples >"$work/examples.txt" 2>&1 || { cat "$work/examples.txt"; fail "the examples"; }
  for source in "$examples"/c/*.c; do
    [ -x "$work/examples/$(basename "$source" .c)" ] || fail "$source was not built"
  done
  LD_LIBRARY_PATH="$library_dir" "$prefix/bin/gwq-terminal" exec -- "$work/examples/sign_document" \
    "$examples/files/agreement.pdf" "$work/signature.png" | grep -q '^signed: ' || fail "the installed example signed nothing"
fi

for program in program cmake/build/program_by_cmake; do
  LD_LIBRARY_PATH="$library_dir" "$prefix/bin/gwq-terminal" exec -- "$work/$program" >"$work/output.txt" 2>&1 ||
    { cat "$work/output.txt"; fail "$program"; }
  grep -q 'terminal software of [0-9]' "$work/output.txt" || { cat "$work/output.txt"; fail "$program said nothing"; }
done

"$prefix/bin/gwq-terminal" check --list >"$work/scenarios.txt" || fail "the scenarios are no good"
[ "$(wc -l <"$work/scenarios.txt")" -eq 10 ] || fail "there are not ten scenarios"
[ -f "$prefix/share/gwq-terminal/scenarios/scenario.schema.json" ] || fail "the schema of scenarios is missing"

try_described() {
  LD_LIBRARY_PATH="$library_dir" "$prefix/bin/gwq-terminal" exec -- "$@" >"$work/output.txt" 2>&1 ||
    { cat "$work/output.txt"; fail "$*"; }
  grep -q 'st_00000001' "$work/output.txt" || { cat "$work/output.txt"; fail "$* described nothing"; }
}
try_described "$work/program_by_object"
export PYTHONPATH="$prefix/lib/python3/dist-packages" PYTHONDONTWRITEBYTECODE=1
try_described python3 -c 'import gwq; print(gwq.Terminal().description())'

readelf -d "$library_dir/libgwq.so" "$prefix/bin/gwq-terminal" | grep -E 'R(UN)?PATH' && fail "an rpath is left"
[ "$(grep -c 'idVendor' "$prefix/lib/udev/rules.d/70-gwq.rules")" -eq 2 ] || fail "the udev rule names no two identities"
echo "installed below $root$2: good"
