#!/usr/bin/env bash
# The release build and every test with Clang.
set -euo pipefail
exec "$(dirname "$0")/../build-and-test.sh" clang --brief
