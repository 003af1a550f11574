#!/usr/bin/env bash
# The tests that run threads, under ThreadSanitizer.
set -euo pipefail
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
exec "$(dirname "$0")/../build-and-test.sh" tsan --brief
