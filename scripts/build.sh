#!/usr/bin/env bash
# Configures and builds one preset with warnings as errors: scripts/build.sh PRESET
# The build's output goes to build/PRESET.log and is shown only when it fails.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
mkdir -p build
log=build/$preset.log
{ cmake --preset "$preset" -G Ninja -DZT_WERROR=ON && cmake --build --preset "$preset" -j "$(nproc)"; } >"$log" 2>&1 || {
  tail -n 60 "$log"
  echo "$preset: the build failed"
  exit 1
}
