#!/bin/sh
# SPDX-License-Identifier: MIT
# subproject.sh SOURCE WORK: adds the library to a parent project, which gets the library and nothing else: its own build type,
# flags, packaging, tests and headers stay as they are.
set -eu
source=$1 work=$2

fail() { echo "subproject: $*" >&2; exit 1; }

rm -rf "$work"
mkdir -p "$work/own"
echo '#define OWN_STATUS 1' >"$work/own/status.h"
echo '#define OWN_EXPORT 1' >"$work/own/export.h"
cat >"$work/program.c" <<'END'
#include <gwq/gwq.h>
#include <gwq/pinpad/settings.h>
#include "export.h"
#include "status.h"
int own = OWN_STATUS + OWN_EXPORT + GWQ_OK;
END
cat >"$work/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(parent LANGUAGES C CXX)
enable_testing()
add_subdirectory(${GWQ_SOURCE} gwq)
add_library(program OBJECT program.c)
target_link_libraries(program PRIVATE gwq::gwq)
target_include_directories(program PRIVATE own)
END

configure() {  # DIRECTORY OPTION...
  directory=$1
  shift
  cmake -S "$work" -B "$work/$directory" -DGWQ_SOURCE="$source" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@" >"$work/$directory.txt" 2>&1 ||
    { cat "$work/$directory.txt"; fail "cannot be configured"; }
}
configure plain
cmake --build "$work/plain" --target program >"$work/program.txt" 2>&1 || { cat "$work/program.txt"; fail "the parent's program"; }
grep -q '^CMAKE_BUILD_TYPE:STRING=$' "$work/plain/CMakeCache.txt" || fail "the parent has a build type that it did not choose"
[ ! -e "$work/plain/CPackConfig.cmake" ] || fail "the parent is packaged"
[ "$(cd "$work/plain" && ctest -N | sed -n 's/^Total Tests: //p')" = 0 ] || fail "the parent has tests of ours"
grep '"file"' "$work/plain/compile_commands.json" | grep -v -e /src/ -e /generated/ -e program.c && fail "more than the library is built"

configure flags -DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DUSER_FLAG"
grep 'src/links/serial.cpp' "$work/flags/compile_commands.json" | grep -q -e '-O1 -DUSER_FLAG' || fail "the user's flags are lost"
echo "added to a parent project: good"
