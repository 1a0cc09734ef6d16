#!/bin/sh
# SPDX-License-Identifier: MIT
# on_a_copy.sh COMMAND...: runs a command as root on this machine's files, below a layer that takes all changes and is thrown
# away: packages may be installed and users made.
set -eu

as_root=
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "on_a_copy: run it as root, or install sudo" >&2; exit 1; }
  as_root=sudo
fi
# The mounts are seen by this process alone and end with it.
# shellcheck disable=SC2016  # for the inner shell
exec $as_root unshare --mount sh -euc '
  here=$PWD
  mount -t tmpfs gwq-copy /mnt
  mkdir /mnt/changes /mnt/work /mnt/all
  mount -t overlay gwq-copy -o lowerdir=/,upperdir=/mnt/changes,workdir=/mnt/work /mnt/all
  for directory in /proc /dev /sys "$here"; do
    [ ! -d "$directory" ] || mount --rbind "$directory" "/mnt/all$directory"
  done
  exec chroot /mnt/all sh -euc "cd \"\$0\"; exec \"\$@\"" "$here" "$@"
' sh "$@"
