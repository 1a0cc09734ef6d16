#!/bin/sh
# try_pip.sh PYTHON_DIR LIBRARY VERSION WORK: installs the module by Debian's pip into an environment of its own, without
# the network, and loads the library by it. 77 where pip is not there.
set -eu
source=$1 library=$2 version=$3 work=$4
python=/usr/bin/python3

$python -c 'import setuptools, wheel, venv, pip' 2>/dev/null || exit 77

rm -rf "$work"
mkdir -p "$work"
cp -R "$source" "$work/source" # pip leaves its own files in the source
$python -m venv --system-site-packages --without-pip "$work/venv"
"$work/venv/bin/python" -m pip install --quiet --no-index --no-build-isolation --disable-pip-version-check \
  --root-user-action=ignore "$work/source"
cd /
installed=$(GWQ_LIBRARY=$library "$work/venv/bin/python" -I -c '
import gwq, pathlib
gwq.Terminal()
assert (pathlib.Path(gwq.__file__).parent / "py.typed").is_file()
print(gwq.__version__, gwq.__file__)' | grep "$work")
[ "$installed" = "$version $(echo "$work"/venv/lib/python3*/site-packages/gwq/__init__.py)" ]
echo "installed: $installed"
