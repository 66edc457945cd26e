#!/usr/bin/env bash
# Installs what is missing, builds, starts a throwaway PostgreSQL cluster, runs every test on
# SQLite and on PostgreSQL, stops the cluster, and exits with the tests' status.
set -euo pipefail
cd "$(dirname "$0")"
./scripts/setup.sh
./scripts/build.sh
build=${ZQRS_BUILD_DIR:-build}

. scripts/pg.sh
trap pg_stop EXIT
pg_start

cd "$build"
ctest --output-on-failure -j"$(nproc)" "$@"
