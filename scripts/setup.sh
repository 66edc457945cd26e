#!/usr/bin/env bash
# Installs what building, running and testing need, from Debian's packages.
# Idempotent, and silent when everything is already there.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config clang-format
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libqt6sql6-psql
  libgl-dev libxkbcommon-dev
  postgresql postgresql-contrib
  fonts-wqy-zenhei poppler-utils
  xvfb xauth
  ccache antiword libzip-dev libxlsxwriter-dev python3 python3-openpyxl
  qt6-charts-dev libqt6opengl6-dev qt6-translations-l10n
  libsqlite3-dev openssl
  lintian dpkg-dev fakeroot file appstream desktop-file-utils qt6-svg-dev
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
