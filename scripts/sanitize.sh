#!/usr/bin/env bash
# ./test.sh with AddressSanitizer and UndefinedBehaviorSanitizer: builds the tests into
# ${ZQRS_ASAN_DIR:-build-asan} and runs every one on SQLite and on a throwaway PostgreSQL cluster.
# Any report of either sanitizer, a leak included, fails the test that caused it.
set -euo pipefail
cd "$(dirname "$0")/.."
export ZQRS_BUILD_DIR=${ZQRS_ASAN_DIR:-build-asan} ZQRS_SANITIZE=ON
export ASAN_OPTIONS=detect_leaks=1:check_initialization_order=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
exec ./test.sh "$@"
