#!/usr/bin/env bash
# Builds and tests one preset: scripts/build-and-test.sh PRESET [ctest arguments]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
scripts/build.sh "$preset"
ctest --preset "$preset" -j "$(nproc)" "$@" || { echo "$preset: a test failed"; exit 1; }
