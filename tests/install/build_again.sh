#!/bin/sh
# SPDX-License-Identifier: MIT
# build_again.sh DIRECTORY: builds the packages once more, from a copy in another directory, at another time and by another
# user's habits; each file must be the one in DIRECTORY, byte for byte. SOURCE_DATE_EPOCH is that of the first build.
set -eu
: "${SOURCE_DATE_EPOCH:?}"
first=$PWD/$1
[ -n "$(find "$first" -maxdepth 1 -name '*.deb')" ] || { echo "build_again: $first has no packages" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' INT TERM HUP
copy=$work/somewhere/else
mkdir -p "$copy"
git ls-files -z --cached --others --exclude-standard | tar --null --files-from - --create | tar -x -C "$copy"

echo "Building the packages again in $copy"
(cd "$copy" && umask 077 && env -u CMAKE_C_COMPILER_LAUNCHER -u CMAKE_CXX_COMPILER_LAUNCHER \
  SOURCE_DATE_EPOCH="$SOURCE_DATE_EPOCH" TZ=Asia/Kathmandu LC_ALL=C.UTF-8 \
  scripts/package >"$work/output.txt" 2>&1) || { tail -n 30 "$work/output.txt"; exit 1; }

compared=0 different=0
for file in "$first"/*.deb "$first"/*.ddeb "$first"/*.whl "$first"/*.spdx.json "$first"/SHA256SUMS; do
  cmp "$file" "$copy/build/package/$(basename "$file")" || different=$((different + 1))
  compared=$((compared + 1))
done
[ "$different" -eq 0 ] || { echo "build_again: $different of $compared files differ" >&2; exit 1; }
echo "built twice: $compared files are the same, byte for byte"
