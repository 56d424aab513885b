#!/usr/bin/env bash
# Installs the built library into a scratch prefix and builds a C99 program
# against it with nothing but pkg-config.
set -euo pipefail
build_dir=$1
program=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build_dir" --prefix "$prefix" >/dev/null
pc=$(dirname "$(find "$prefix" -name vqxml.pc | head -n1)")
cc -std=c99 -Wall -Werror -pedantic "$program" -o "$prefix/app" \
  $(PKG_CONFIG_PATH="$pc" pkg-config --cflags --libs vqxml)
test "$("$prefix/app")" = "V1.0.0.7"
