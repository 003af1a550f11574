#!/usr/bin/env bash
# Builds and tests one preset: scripts/build-and-test.sh PRESET [--brief] [ctest arguments]
# --brief: the tests' output goes to build/PRESET-tests.log and is shown only when one fails.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
brief=no
[ "${1:-}" != --brief ] || { brief=yes; shift; }
scripts/build.sh "$preset"
if [ $brief = no ]; then
  ctest --preset "$preset" -j "$(nproc)" "$@" || { echo "$preset: a test failed"; exit 1; }
  exit 0
fi
log=build/$preset-tests.log
ctest --preset "$preset" -j "$(nproc)" "$@" >"$log" 2>&1 || {
  grep -vE '^ +Start |Passed' "$log" | tail -n 150
  echo "$preset: a test failed"
  exit 1
}
grep 'tests passed' "$log"
