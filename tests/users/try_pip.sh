#!/bin/sh
# SPDX-License-Identifier: MIT
# try_pip.sh PYTHON_DIR LIBRARY VERSION WORK: installs the module by Debian's pip into an environment of its own, as the guide
# says, without any network and without setuptools, and loads the library by it; then makes a wheel and installs that. 77 where
# pip is not there.
set -eu
source=$1 library=$2 version=$3 work=$4
python=/usr/bin/python3
# The index is a port at which nobody listens: whatever asks it fails at once.
export PIP_INDEX_URL=http://127.0.0.1:9/ PIP_RETRIES=0 PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_NO_INPUT=1

$python -c 'import venv, ensurepip' 2>/dev/null || exit 77

# works ENVIRONMENT: the module is installed there, whole, and says which it is.
works() {
  installed=$(cd / && GWQ_LIBRARY=$library "$1/bin/python" -I -c '
import gwq, pathlib
gwq.Terminal()
assert (pathlib.Path(gwq.__file__).parent / "py.typed").is_file()
print(gwq.__version__, gwq.__file__)' | grep "$work")
  [ "$installed" = "$version $(echo "$1"/lib/python3*/site-packages/gwq/__init__.py)" ]
  echo "installed: $installed"
}

rm -rf "$work"
mkdir -p "$work"
cp -R "$source" "$work/source" # nothing may be left in the source
$python -m venv "$work/venv"
"$work/venv/bin/pip" uninstall --quiet --yes setuptools
"$work/venv/bin/pip" install --quiet "$work/source"
works "$work/venv"
"$work/venv/bin/pip" uninstall --quiet --yes gwq

for run in 1 2; do
  "$work/venv/bin/python" -m pip wheel --quiet --no-build-isolation --no-deps --no-index -w "$work/wheels$run" "$work/source"
done
wheel=gwq-$version-py3-none-any.whl
[ "$(ls "$work/wheels1")" = "$wheel" ]
cmp "$work/wheels1/$wheel" "$work/wheels2/$wheel"
"$work/venv/bin/pip" install --quiet --no-index "$work/wheels1/$wheel"
works "$work/venv"
"$work/venv/bin/pip" uninstall --quiet --yes gwq

(cd "$work/source" && "$work/venv/bin/python" -c "import gwq_build; gwq_build.build_sdist('$work')")
"$work/venv/bin/pip" install --quiet --no-index "$work/gwq-$version.tar.gz"
works "$work/venv"
