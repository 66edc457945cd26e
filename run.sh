#!/usr/bin/env bash
# Installs what is missing, builds, makes a demo database in the user's data folder when there is
# none, and starts the host on it. Extra arguments go to zqrs.
set -euo pipefail
cd "$(dirname "$0")"
./scripts/setup.sh
./scripts/build.sh
build=${ZQRS_BUILD_DIR:-build}

data="${XDG_DATA_HOME:-$HOME/.local/share}/zqrs"
db="$data/demo.db"
if [ ! -f "$db" ]; then
  mkdir -p "$data"
  echo "run: making a demo database at $db"
  "$build/app/zqrs-admin" demo --db "$db" --persons 2000 --seed 1
fi
exec "$build/app/zqrs" --db "$db" "$@"
