#!/bin/sh
# pip installs the package from a copy of bindings/python into a fresh virtual environment,
# offline (Debian's setuptools builds it), and uses it from there.
#   pip_install.sh PYTHON SOURCE_DIR   (VQXML_LIBRARY names the library to use)
set -eu
python=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$2" "$work/source"
"$python" -m venv --system-site-packages "$work/venv"
"$work/venv/bin/python" -m pip install -q --no-index --no-build-isolation "$work/source"
cd "$work"
"$work/venv/bin/python" -c '
import sys, vqxml
assert vqxml.__file__.startswith(sys.argv[1]), vqxml.__file__
with vqxml.Certificates() as c:
    assert c.version().startswith("V")
' "$work/venv/"
