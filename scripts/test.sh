#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer, warnings
# as errors, and runs every test. This is what CI runs.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
cmake --preset asan-ubsan -S "$root" >/dev/null
cmake --build "$root/build/asan-ubsan"
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export LSAN_OPTIONS="${LSAN_OPTIONS:-suppressions=$root/scripts/lsan-suppressions.txt:print_suppressions=0}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
ctest --test-dir "$root/build/asan-ubsan" --output-on-failure "$@"
