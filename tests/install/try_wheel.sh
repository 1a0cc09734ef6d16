#!/bin/sh
# SPDX-License-Identifier: MIT
# try_wheel.sh WHEEL LIBRARY WORK: installs the wheel by Debian's pip, without the network, and loads the library by it.
set -eu
wheel=$1 library=$2 work=$3

rm -rf "$work"
/usr/bin/python3 -m pip install --quiet --no-index --no-deps --disable-pip-version-check --root-user-action=ignore \
  --target "$work" "$wheel"
cd /
GWQ_LIBRARY=$library PYTHONPATH=$work /usr/bin/python3 -c '
import gwq, pathlib
gwq.Terminal()
assert (pathlib.Path(gwq.__file__).parent / "py.typed").is_file()
print("wheel:", gwq.__version__, gwq.__file__)' | grep -F "$work/gwq/"
