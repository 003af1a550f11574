#!/usr/bin/env bash
# Builds and installs the library, builds the pipeline example from the installed tree, and runs it on
# a real file: scripts/demo.sh [FILE]
set -euo pipefail
file=$(realpath "${1:-/bin/bash}")
cd "$(dirname "$0")/.."
scripts/setup.sh build

build=$PWD/build/demo
prefix=$build/installed
mkdir -p "$build"
{
  cmake -S . -B "$build/library" -G Ninja -DCMAKE_INSTALL_PREFIX="$prefix" &&
    cmake --build "$build/library" --target install -j "$(nproc)" &&
    cmake -S examples/pipeline -B "$build/pipeline" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_BUILD_TYPE=RelWithDebInfo &&
    cmake --build "$build/pipeline"
} >"$build/log" 2>&1 || { tail -n 40 "$build/log"; echo "demo: the build failed"; exit 1; }
pipeline=$build/pipeline/pipeline

echo "== pipeline $file"
output=$("$pipeline" "$file") || { echo "$output"; echo "demo: the pipeline failed"; exit 1; }
echo "$output"
counted=$(sed -n 's/^total: \([0-9]*\) bytes.*/\1/p' <<<"$output")
size=$(wc -c <"$file")
[ "$counted" = "$size" ] || { echo "demo: counted $counted of $size bytes"; exit 1; }

echo "== pipeline --stall $file"
if output=$("$pipeline" --stall "$file"); then echo "$output"; echo "demo: the stall was not noticed"; exit 1; fi
grep 'thread "worker-1".*has stopped keeping alive' <<<"$output" ||
  { echo "$output"; echo "demo: the watchdog did not name the thread"; exit 1; }

echo "== pipeline --crash $file"
code=0
output=$("$pipeline" --crash "$file" 2>&1) || code=$?
sed -n '/Dump stack start/,/Dump stack end/p' <<<"$output"
grep -q '^\*\*\* Thread: worker-1 \*\*\*$' <<<"$output" && [ "$code" -eq 139 ] ||
  { echo "$output"; echo "demo: no crash report, or exit status $code instead of 139"; exit 1; }

echo "== the pipeline counted $counted bytes, as wc -c does; the stall and the crash were reported"
