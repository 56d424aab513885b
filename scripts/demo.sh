#!/usr/bin/env bash
# Sets up the machine, builds the library and runs the demo.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build >/dev/null
cmake --build build -j2 --target vqxml_demo >/dev/null
./build/demo/vqxml_demo tests/data/dsig
