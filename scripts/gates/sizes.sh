#!/usr/bin/env bash
# Tests keep to their share of the code, and no source file grows past 600 lines.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/loc.sh --check
long=$(git ls-files '*.c' '*.cpp' '*.h' '*.hpp' | xargs wc -l | awk '$2 != "total" && $1 > 600 { print $2 ": " $1 " lines" }')
[ -z "$long" ] || { echo "$long"; echo "sizes: files over 600 lines"; exit 1; }
