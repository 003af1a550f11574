#!/usr/bin/env bash
# clang-tidy over the library's sources, warnings are errors.
set -euo pipefail
cd "$(dirname "$0")/../.."
mkdir -p build
cmake --preset clang -G Ninja -DZT_WERROR=ON >build/tidy.log 2>&1 || { tail -n 20 build/tidy.log; exit 1; }
# Only what this machine compiles: the kernels of the other architecture are not in the database.
grep -o '"file": "[^"]*"' build/clang/compile_commands.json | cut -d'"' -f4 | grep "^$PWD/src/" | sort -u |
  xargs -P "$(nproc)" -n 3 clang-tidy -p build/clang --quiet >build/tidy.log 2>&1 || {
  grep -vE 'warnings? (generated|treated)|^Suppressed|^Use -header' build/tidy.log
  echo "tidy: clang-tidy has something to say"
  exit 1
}
