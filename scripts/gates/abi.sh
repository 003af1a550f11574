#!/usr/bin/env bash
# The binary interface is the one of the baselines in abi/: records, signatures, exports of each
# architecture, and the values of the constants. New names may come; nothing else may change.
#   scripts/gates/abi.sh           checks
#   scripts/gates/abi.sh --renew   writes the baselines anew; docs/abi.md says when that is right
set -euo pipefail
cd "$(dirname "$0")/../.."
mode=${1:-check}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bad=0

# The interface of a shared object as a file: what the headers declare, without paths and line numbers.
describe() {
  abidw --headers-dir include --drop-private-types --exported-interfaces-only \
    --no-corpus-path --no-comp-dir-path --no-show-locs --type-id-style hash "$1"
}

# Enumerators of the headers and their values. No function takes an enum, so that the dumps lack them.
constants() {
  echo '#include "zt/base.h"' | "${CC:-gcc}" -g -fno-eliminate-unused-debug-types -Iinclude -xc -c - -o "$work/constants.o"
  readelf --debug-dump=info "$work/constants.o" |
    awk '/DW_TAG_/ { wanted = /DW_TAG_enumerator\)/ }
         wanted && /DW_AT_name/ { name = $NF }
         wanted && /DW_AT_const_value/ { if (name ~ /^ZT_/) print name, $NF }' | LC_ALL=C sort
}

# any non-zero exit of abidiff is a change: it is a bit field in which a grown record has no bit of its own
check_library() {
  local machine=$1 library=$2 baseline=abi/$1.abi
  readelf -SW "$library" | grep -q debug_info || { echo "abi: $machine: built without debug information"; bad=1; return; }
  describe "$library" >"$work/$machine.abi"
  if [ "$mode" = --renew ]; then cp "$work/$machine.abi" "$baseline"; return; fi
  [ -f "$baseline" ] || { echo "abi: $baseline is missing"; bad=1; return; }
  if abidiff --no-added-syms --harmless "$baseline" "$work/$machine.abi" >"$work/$machine.diff" 2>&1; then
    echo "abi: $machine: $(grep -c '<elf-symbol ' "$baseline") names as in the baseline"
  else
    grep -v '^$' "$work/$machine.diff" | sed -n '1,60p'
    echo "abi: $machine: the interface is not that of $baseline; see docs/abi.md"
    bad=1
  fi
}

native=$(uname -m)
library=$(scripts/built-library.sh)
check_library "$native" "$library"
if [ "$native" != aarch64 ]; then
  if command -v aarch64-linux-gnu-g++ >/dev/null; then
    scripts/build.sh aarch64
    check_library aarch64 build/aarch64/libzt_base.so.0.4.203
  else
    echo "abi: aarch64: skipped, no cross compiler (package g++-aarch64-linux-gnu)"
  fi
fi

constants >"$work/constants.txt"
if [ "$mode" = --renew ]; then cp "$work/constants.txt" abi/constants.txt; exit 0; fi
gone=$(LC_ALL=C comm -23 abi/constants.txt "$work/constants.txt")
[ -z "$gone" ] || { echo "$gone"; echo "abi: these constants are gone or have another value"; bad=1; }
exit $bad
