#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the sample need, when missing.
# Usage: scripts/deps.sh [--with-office] [--with-browser]
#   --with-office   LibreOffice and poppler, the second reader of the tests' documents
#   --with-browser  Chromium and Node.js with npm, for the browser test of the report dialog
#   --with-solver   CalculiX (ccx) and its test decks, for the reports of solved example studies
set -euo pipefail
pkgs=(build-essential cmake pkg-config libgtest-dev libgmock-dev libbenchmark-dev
      libpugixml-dev libzip-dev libcpp-httplib-dev libmimalloc-dev zlib1g-dev nlohmann-json3-dev libcli11-dev libstb-dev
      clang libclang-rt-14-dev zip locales fonts-dejavu-core)
for option in "$@"; do
  case "$option" in
    --with-office) pkgs+=(libreoffice-writer-nogui libreoffice-calc-nogui poppler-utils fonts-liberation) ;;
    --with-browser)
      pkgs+=(chromium)
      # A Node.js of another origin brings its own npm; Debian's npm would clash with it.
      command -v node >/dev/null || pkgs+=(nodejs)
      command -v npm >/dev/null || pkgs+=(npm) ;;
    --with-solver) pkgs+=(calculix-ccx calculix-ccx-test) ;;
    *) echo "deps.sh: unknown option $option" >&2; exit 2 ;;
  esac
done
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  SUDO=""; [[ $(id -u) -ne 0 ]] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
