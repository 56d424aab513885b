#!/usr/bin/env bash
# Builds the concurrency stress test with ThreadSanitizer (build-tsan) and runs it.
#   scripts/stress.sh [seconds]   how long the load runs (default 60)
# Any data race ThreadSanitizer sees fails the run. The same test also runs, for a
# few seconds, with the other tests (and under ASan and LSan in their build).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
bash scripts/setup.sh

cmake -S . -B build-tsan -DVQXML_TSAN=ON -DVQXML_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-tsan -j2 --target stress_tests
TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1${TSAN_OPTIONS:+:$TSAN_OPTIONS}" \
  VQXML_STRESS_SECONDS="$seconds" build-tsan/tests/stress/stress_tests
