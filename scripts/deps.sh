#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the sample need, when missing.
# Usage: scripts/deps.sh [--with-office]
set -euo pipefail
pkgs=(build-essential cmake pkg-config libgtest-dev libgmock-dev libbenchmark-dev
      libpugixml-dev libzip-dev zlib1g-dev nlohmann-json3-dev libcli11-dev libstb-dev
      clang libclang-rt-14-dev zip locales)
if [[ "${1:-}" == "--with-office" ]]; then
  pkgs+=(libreoffice-writer-nogui libreoffice-calc-nogui poppler-utils fonts-dejavu-core fonts-liberation)
fi
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
