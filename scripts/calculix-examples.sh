#!/usr/bin/env bash
# Solves the CalculiX example decks (examples/calculix) with ccx and writes their reports.
#
#   scripts/calculix-examples.sh BUILD_DIR OUT_DIR
#
# Each deck is solved in a scratch folder, removed afterwards; OUT_DIR receives one report per
# example. Without ccx it says so and does nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:?build folder}"
out="${2:?output folder}"
if ! command -v ccx >/dev/null; then
  echo "== CalculiX examples: skipped (ccx is not installed: apt-get install calculix-ccx)"
  exit 0
fi
echo "== CalculiX examples: solved by ccx, reported into $out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out"
for deck in examples/calculix/*/*.inp; do
  name=$(basename "$deck" .inp)
  mkdir -p "$work/$name"
  cp "$deck" "$work/$name/"
  (cd "$work/$name" && ccx -i "$name" >ccx.log 2>&1) || { echo "ccx failed on $deck:"; tail -20 "$work/$name/ccx.log"; exit 1; }
  "$build/zpreport" generate "$work/$name/$name.inp" --out "$out" --units mm-N-s 2>"$work/$name/report.log" ||
    { cat "$work/$name/report.log"; exit 1; }
done
