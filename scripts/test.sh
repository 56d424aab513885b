#!/usr/bin/env bash
# Sets up the machine, builds and runs every test.
#   VQXML_SANITIZE=1  builds into build-asan with AddressSanitizer and UBSan.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

if [ "${VQXML_SANITIZE:-0}" = 1 ]; then
  dir=build-asan
  flags=(-DVQXML_SANITIZE=ON -DVQXML_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug)
  export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
  export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp"
else
  dir=build
  flags=()
fi
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j2
ctest --test-dir "$dir" --output-on-failure -j2
