#!/usr/bin/env bash
# Release build with warnings as errors, then every test through ctest.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh test
scripts/build-and-test.sh release "$@"
