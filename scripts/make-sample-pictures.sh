#!/usr/bin/env bash
# Redraws the pictures of the sample studies (examples/bracket/pictures,
# examples/fatigue/pictures, examples/frequency/pictures, examples/vessel/pictures).
# Needs a C++ compiler and the stb headers (libstb-dev).
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
g++ -std=c++20 -O2 -w examples/tools/make_pictures.cpp -o "$work/make_pictures"
mkdir -p examples/bracket/pictures examples/fatigue/pictures examples/frequency/pictures examples/vessel/pictures
"$work/make_pictures" examples/bracket/pictures examples/fatigue/pictures examples/frequency/pictures \
  examples/vessel/pictures
ls -l examples/bracket/pictures examples/fatigue/pictures examples/frequency/pictures examples/vessel/pictures
