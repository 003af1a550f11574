#!/usr/bin/env bash
# Every test under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
export UBSAN_OPTIONS=print_stacktrace=1 ASAN_OPTIONS=detect_stack_use_after_return=1
exec "$(dirname "$0")/../build-and-test.sh" asan-ubsan --brief
