#!/usr/bin/env bash
# Sets up the machine, builds the library and its command-line tool, and runs the
# demo: the library's story told with the tool (demo/story.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build >/dev/null
cmake --build build -j2 --target vqxml-cli >/dev/null
bash demo/story.sh build/cli/vqxml
