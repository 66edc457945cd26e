#!/usr/bin/env bash
# Configures and builds into ${ZQRS_BUILD_DIR:-build}. Under CI warnings are errors.
# ZQRS_SANITIZE=ON (scripts/sanitize.sh) makes the folder a sanitizer build of the tests.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${ZQRS_BUILD_DIR:-build}
werror=OFF
[ -n "${CI:-}" ] && werror=ON
cmake -S . -B "$build" -G Ninja -DZQRS_WERROR=$werror ${ZQRS_SANITIZE:+-DZQRS_SANITIZE=$ZQRS_SANITIZE} >/dev/null
cmake --build "$build" -j"$(nproc)" | grep -v -E '^\[[0-9]+/[0-9]+\] ' || true
test "${PIPESTATUS[0]}" -eq 0
