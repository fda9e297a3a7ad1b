#!/usr/bin/env bash
# The report dialog in a real headless browser (Debian's chromium, driven by playwright-core
# from npm at the version tests/browser/package-lock.json pins).
#   scripts/browser-test.sh BUILD_DIR
set -euo pipefail
build="$(cd "${1:?the build folder}" && pwd)"
cd "$(dirname "$0")/.."
major=$(node -p 'process.versions.node.split(".")[0]' 2>/dev/null || echo 0)
if ((major < 20)); then
  echo "== Browser test: skipped (playwright-core needs Node.js 20 or later; this machine has ${major})"
  exit 0
fi
echo "== Browser test"
(cd tests/browser && npm ci --no-audit --no-fund --loglevel=error)
node tests/browser/dialog.test.mjs "$build" "$PWD"
