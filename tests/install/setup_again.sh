#!/bin/sh
# SPDX-License-Identifier: MIT
# Where all is installed, scripts/setup needs no network: it asks neither apt nor for root, and says nothing.
set -eu
cd "$(dirname "$0")/../.."
refuse=$(mktemp -d)
trap 'rm -rf "$refuse"' EXIT
for program in apt-get apt sudo; do
  printf '#!/bin/sh\necho "%s was asked: $*" >&2\nexit 1\n' "$program" >"$refuse/$program"
  chmod +x "$refuse/$program"
done
said=$(PATH=$refuse:$PATH scripts/setup 2>&1) || { echo "$said" >&2; exit 1; }
[ -z "$said" ] || { echo "scripts/setup said: $said" >&2; exit 1; }
if PATH=$refuse:$PATH scripts/setup no-such-group 2>/dev/null; then
  echo "scripts/setup took a group that there is not" >&2
  exit 1
fi
