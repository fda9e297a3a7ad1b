#!/usr/bin/env bash
# Builds the library and the command-line program, and generates the bundled sample report.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DZP_TESTS=OFF -DZP_BENCH=OFF >/dev/null
cmake --build build -j"$(nproc)"
mkdir -p out
build/zpreport generate examples/bracket/study.json --out out --name Sample
