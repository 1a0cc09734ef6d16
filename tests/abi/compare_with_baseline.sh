#!/bin/sh
# SPDX-License-Identifier: MIT
# compare_with_baseline.sh LIBRARY HEADERS BASELINE: fails on what was removed or changed. Exit status 77: skipped.
# The processors' interfaces are the same, but for the name that the baseline has at its beginning.
set -eu
library=$1 headers=$2 baseline=$3

command -v abidiff >/dev/null || { echo "skipped: abidiff is missing; install abigail-tools"; exit 77; }
[ -f "$baseline" ] || { echo "there is no $baseline; scripts/abi-baseline makes it"; exit 1; }
# A library without debug information would agree with anything that has the same symbols.
readelf -S "$library" | grep -q '\.debug_info' || { echo "$library has no debug information"; exit 1; }
here=$(mktemp)
trap 'rm -f "$here"' EXIT
architecture=$(abidw --exported-interfaces-only "$library" | sed -n "1s/.*architecture='\([^']*\)'.*/\1/p")
sed "1s/architecture='[^']*'/architecture='$architecture'/" "$baseline" >"$here"
# It says nothing where there is no difference; a baseline that it cannot read is no failure to it, but has words.
status=0
words=$(abidiff --no-added-syms --headers-dir2 "$headers" --drop-private-types --no-show-locs "$here" "$library" 2>&1) || status=$?
# Additions, which it was told to leave out, are counted all the same.
words=$(echo "$words" | sed '/^$/d; /^[FV][a-z]* changes summary: 0 Removed, 0 Changed, 0 Added/d')
[ -n "$words" ] || [ "$status" -ne 0 ] || exit 0
echo "$words"
echo "Programs built against $baseline would break. Where that is wanted: scripts/abi-baseline"
exit 1
