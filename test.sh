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
if ! ctest --output-on-failure -j"$(nproc)" "$@"; then
    # The leak checker's own tracer can die stopping a process as it exits ("Tracer caught signal"),
    # which says nothing of the program. Only when every failure is that are they run once more.
    log=Testing/Temporary/LastTest.log
    failed=$(grep -c . Testing/Temporary/LastTestsFailed.log || true)
    tracer=$(grep -c "LeakSanitizer has encountered a fatal error" "$log" || true)
    if [ "$tracer" -gt 0 ] && [ "$tracer" -eq "$failed" ] &&
        ! grep -Eq "ERROR: (Leak|Address)Sanitizer|runtime error:|^FAIL!" "$log"; then
        echo "test.sh: the leak checker's tracer failed in $failed test(s); running them once more"
        ctest --output-on-failure --rerun-failed
    else
        exit 1
    fi
fi
