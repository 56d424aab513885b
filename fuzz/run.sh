#!/usr/bin/env bash
# Builds one libFuzzer target with clang, AddressSanitizer and UBSan into
# build-fuzz, then runs it for the given seconds over its committed corpus.
#   fuzz/run.sh <target> <seconds>      e.g. fuzz/run.sh mime_body_fuzzer 60
# New inputs go to a scratch directory (the committed corpus stays as it is);
# crashes are written to build-fuzz/artifacts/. Exits non-zero on a finding.
set -euo pipefail
if [ $# -ne 2 ]; then
  echo "usage: $0 <target> <seconds>" >&2
  exit 2
fi
target=$1
seconds=$2
cd "$(dirname "$0")/.."

CC=clang CXX=clang++ cmake -S . -B build-fuzz -DVQXML_FUZZ=ON -DVQXML_SANITIZE=ON \
  -DVQXML_BUILD_TESTS=OFF -DVQXML_BUILD_BENCH=OFF >/dev/null
cmake --build build-fuzz -j2 --target "$target"

# The corpus lives beside the CMakeLists.txt that declares the target.
declaration=$(grep -l "vqxml_fuzz(${target}[ )]" fuzz/*/CMakeLists.txt | head -n 1)
if [ -z "$declaration" ]; then
  echo "no fuzz target named $target" >&2
  exit 2
fi
corpus="$(dirname "$declaration")/corpus"
binary=$(find build-fuzz/fuzz -type f -name "$target" -perm -u+x | head -n 1)

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p build-fuzz/artifacts
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp"
# The fuzzer's progress lines go to a log; only a finding shows them.
log="build-fuzz/${target}.log"
if ! "$binary" -max_total_time="$seconds" -rss_limit_mb=2048 -max_len=65536 -timeout=10 \
  -artifact_prefix="build-fuzz/artifacts/${target}-" "$scratch" "$corpus" >"$log" 2>&1; then
  tail -n 60 "$log" >&2
  echo "fuzz: $target found a problem; input in build-fuzz/artifacts/" >&2
  exit 1
fi
echo "fuzz: $target ran ${seconds}s: $(grep -E '^Done [0-9]+ runs' "$log" | tail -n 1)"
