#!/usr/bin/env bash
# Runs every service of the library at once, on more threads than there are processors, and checks in the
# end that what went in has come out. Prints what has been done and fails when anything is missing.
#   scripts/soak.sh SECONDS [release|tsan]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-}
preset=${2:-release}
[[ $seconds =~ ^[1-9][0-9]*$ && $preset =~ ^(release|tsan)$ ]] ||
  { echo "usage: scripts/soak.sh SECONDS [release|tsan]" >&2; exit 2; }
scripts/setup.sh test
mkdir -p build
{ cmake --preset "$preset" -G Ninja -DZT_WERROR=ON && cmake --build --preset "$preset" -j "$(nproc)" --target soak; } \
  >"build/soak.log" 2>&1 || { tail -n 60 build/soak.log; echo "soak: the build failed"; exit 1; }
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
exec "build/$preset/tests/soak/soak" "$seconds"
