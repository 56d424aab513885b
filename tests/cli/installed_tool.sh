#!/usr/bin/env bash
# Installs the build into a scratch prefix and runs the installed tool from there.
set -euo pipefail
build_dir=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build_dir" --prefix "$prefix" >/dev/null
test "$("$prefix/bin/vqxml" version)" = "V1.0.0.7"
test "$("$prefix/bin/vqxml" --version)" = "V1.0.0.7"
