#!/usr/bin/env bash
# Every source file is as clang-format would write it.
set -euo pipefail
cd "$(dirname "$0")/../.."
git ls-files '*.c' '*.cpp' '*.h' '*.hpp' | xargs -r clang-format --dry-run --Werror ||
  { echo "format: run clang-format -i on the files above"; exit 1; }
