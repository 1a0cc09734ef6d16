#!/bin/sh
# SPDX-License-Identifier: MIT
# try_log.sh GUIDE PACKAGE PROGRAM: installs the library's package alone, and takes a log of a program as the guide says, as an
# ordinary user; purging takes the logs away, and nothing else. It changes the machine: run it by on_a_copy.sh.
set -eu
guide=$1 package=$2 program=$3
home=/home/gwq-log-teller

fail() { echo "try_log: $*" >&2; exit 1; }

all_there() { for file; do [ -e "$file" ] || return 1; done; }
all_gone() { for file; do [ ! -e "$file" ] || return 1; done; }

# The guide's commands that are marked with a word, for a user of this name.
commands() { # WORD
  awk -v mark="\`\`\`sh $1" '$0 == mark {inside = 1; next} /^```/ {inside = 0} inside' "$guide" |
    sed 's/-o teller/-o gwq-log-teller/' | grep . || fail "$guide has no commands for $1"
}
as_root() { commands "$1" >/tmp/gwq-commands && sh -eu /tmp/gwq-commands; }
as_teller() { setpriv --reuid gwq-log-teller --regid gwq-log-teller --clear-groups env -C "$home" HOME="$home" sh -eu "$@"; }
run_program() { as_teller -c './teller >output.txt 2>&1 || true; cat output.txt'; }

dpkg -i "$package" >/dev/null
library=$(dirname "$(dpkg -L libgwq1 | grep '/libgwq\.so\.1$')")
useradd --create-home --home-dir "$home" gwq-log-teller
cp "$program" "$home/teller"
today=VK_$(date +%Y%m%d).log

# Without preparation: nothing, and no harm.
printf '[Gwq]\nLog=1\n' >"$library/GWQ_LOG.ini"
run_program | grep -qx 'szLogFlag=1' || fail "the switch was not read"
[ ! -e "$library/Log" ] || fail "an ordinary user made a directory in $library"
rm "$library/GWQ_LOG.ini"

# Root's way.
as_root root
run_program >/dev/null
log=$library/Log/Gwq_Volkarn/$today
[ -s "$log" ] || fail "no log after what $guide tells root to do"
[ "$(stat -c %U "$log")" = gwq-log-teller ] || fail "the log is not the teller's"
grep -q 'GWQ_GetVerBuildDate' "$log" || fail "the log says nothing of the call"

# What leaves the log off.
try_silent() { # INI-CONTENT
  rm -f "$log"
  printf '%b' "$1" >"$library/GWQ_LOG.ini"
  if run_program | grep -q '^szLogFlag=1' || [ -e "$log" ]; then fail "a log in spite of $1"; fi
}
for content in '[Gwq]\nLog=true\n' '[Gwq]\nLog=on\n' '[Gwq]\nLog=yes\n' '[gwq]\nLog=1\n' '[Gwq]\nlog=1\n' \
  '\0357\0273\0277[Gwq]\nLog=1\n'; do
  try_silent "$content"
done
as_root root-afterwards
all_gone "$library/Log" "$library/GWQ_LOG.ini" || fail "what root prepared is still there"

# The teller's own way.
commands teller >/tmp/gwq-commands
sed -i 's/^\(.*\.\/teller\)$/\1 || true/' /tmp/gwq-commands # which finds no terminal here
as_teller /tmp/gwq-commands | grep -qx "$today" || fail "no log after what $guide tells the teller to do"
[ -s "$home/gwq-debug/Log/Gwq_Volkarn/$today" ] || fail "the teller's log is empty"

# Purging: what the library made goes, what others put there stays.
as_root root
run_program >/dev/null
[ -s "$log" ] || fail "no log to purge"
touch "$library/Log/Gwq_Volkarn/VK_notes.log" "$library/Log/ours.txt"
dpkg -r libgwq1 >/dev/null
[ -s "$log" ] || fail "removing the package removed the log"
dpkg -P libgwq1 >/dev/null
all_gone "$log" "$library/GWQ_LOG.ini" || fail "purging left a log or its switch"
all_there "$library/Log/Gwq_Volkarn/VK_notes.log" "$library/Log/ours.txt" ||
  fail "purging removed others' files"

dpkg -i "$package" >/dev/null
rm "$library/Log/Gwq_Volkarn/VK_notes.log" "$library/Log/ours.txt"
touch "$library/Log/Gwq_Volkarn/VK_20240305.log"
dpkg -P libgwq1 >/dev/null
[ ! -e "$library/Log" ] || fail "purging left empty directories"

# A link that somebody put there leads to others' files.
dpkg -i "$package" >/dev/null
mkdir -p "$library/Log" "$home/others"
touch "$home/others/VK_20240305.log"
ln -s "$home/others" "$library/Log/Gwq_Volkarn"
dpkg -P libgwq1 >/dev/null
[ -e "$home/others/VK_20240305.log" ] || fail "purging followed a link"
[ -s "$home/gwq-debug/Log/Gwq_Volkarn/$today" ] || fail "purging removed the log of a private copy"
echo "the log as an ordinary user, and purging: good"
