#!/usr/bin/env bash
# The shared object exports exactly the names of abi/libzt_base.map, under its version node.
set -euo pipefail
cd "$(dirname "$0")/../.."
library=$(scripts/built-library.sh)
listed=$(sed -n '/global:/,/local:/p' abi/libzt_base.map | grep -oE '[A-Za-z_][A-Za-z0-9_]*;' | tr -d ';' | LC_ALL=C sort)
exported=$(nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort)
if ! difference=$(diff <(echo "$listed") <(echo "$exported")); then
  echo "$difference"
  echo "exports: abi/libzt_base.map (<) and the shared object (>) differ"
  exit 1
fi
echo "exports: $(wc -l <<<"$exported") names, as listed"
