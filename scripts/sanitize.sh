#!/usr/bin/env bash
# ./test.sh with AddressSanitizer and UndefinedBehaviorSanitizer: builds the tests into
# ${ZQRS_ASAN_DIR:-build-asan} and runs every one on SQLite and on a throwaway PostgreSQL cluster.
# Any report of either sanitizer, a leak included, fails the test that caused it.
set -euo pipefail
cd "$(dirname "$0")/.."
export ZQRS_BUILD_DIR=${ZQRS_ASAN_DIR:-build-asan} ZQRS_SANITIZE=ON
# intercept_tls_get_addr=0: this compiler's runtime takes a thread's dynamic TLS block for an old
# glibc's when its address happens to fall on one offset in a page, reads a bogus range from it, and
# its leak checker then dies at the process's exit ("Tracer caught signal 11") with no leak found.
# Where a test hits it depends only on where blocks happen to land.
export ASAN_OPTIONS=detect_leaks=1:check_initialization_order=1:detect_stack_use_after_return=1:intercept_tls_get_addr=0
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
exec ./test.sh "$@"
