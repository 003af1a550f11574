#!/usr/bin/env bash
# What the built shared objects must have: hardening, whole back-traces, nothing that runs at load,
# operations that applications can replace. For this machine and, with the cross compiler, 64-bit Arm.
set -euo pipefail
cd "$(dirname "$0")/../.."
bad=0
fail() { echo "hardening: $machine: $1"; bad=1; }

flags="-O2 -fPIC -fvisibility=hidden -fno-exceptions -fno-rtti -fno-omit-frame-pointer
  -fasynchronous-unwind-tables -fstack-protector-strong -fstack-clash-protection"
# The library must call these through the symbol table.
replaceable="zt_malloc zt_zalloc zt_free zt_memcpy zt_memset zt_mutex_init zt_mutex_lock zt_mutex_unlock
  zt_time_get_ms ring_buf_get_rewind_threshold PADDING"

# Segments, dynamic section, notes: what the linker and the loader see.
check_object() {
  local segments=$1 dynamic=$2 notes=$3 needed
  grep -q '^ *GNU_RELRO' <<<"$segments" || fail "no RELRO segment"
  grep -q '(FLAGS).*BIND_NOW' <<<"$dynamic" && grep -q '(FLAGS_1).*NOW' <<<"$dynamic" || fail "symbols are bound lazily"
  grep -qE '^ *GNU_STACK.* RW +0x' <<<"$segments" || fail "the stack is not marked as non-executable"
  grep -qE '^ *LOAD.* RWE ' <<<"$segments" && fail "a segment is writable and executable"
  grep -q '^ *GNU_EH_FRAME' <<<"$segments" || fail "no table of unwind data"
  grep -qE 'TEXTREL' <<<"$dynamic" && fail "text relocations"
  grep -qE 'SYMBOLIC' <<<"$dynamic" && fail "linked with -Bsymbolic"
  grep -qE '\((RPATH|RUNPATH)\)' <<<"$dynamic" && fail "has a run path"
  grep -qE '\((INIT|FINI|(PREINIT|INIT|FINI)_ARRAY)\)' <<<"$dynamic" && fail "something runs at load or unload"
  grep -q '(SONAME).*\[libzt_base\.so\.0\]' <<<"$dynamic" || fail "the soname is not libzt_base.so.0"
  needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic" | grep -v '^ld-linux' || true)
  [ "$needed" = libc.so.6 ] || fail "needs $(tr '\n' ' ' <<<"$needed")"
  grep -q "$marks" <<<"$notes" || fail "not marked with $marks"
}

# Imports: the stack protector and the checked versions of what prints are in use.
check_imports() {
  local imports=$1 plain
  grep -qx '__stack_chk_fail' <<<"$imports" || fail "no stack protector"
  grep -qx '__vsnprintf_chk' <<<"$imports" || fail "not fortified"
  plain=$(grep -xE 'v?(f|s|sn|d)?printf|v?syslog' <<<"$imports" || true)
  [ -z "$plain" ] || fail "calls the unchecked $(tr '\n' ' ' <<<"$plain")"
}

# Each file was compiled with the flags; the compiler records them, all but definitions, in the debug information.
check_flags() {
  local library=$1 producers flag
  producers=$(readelf --debug-dump=info "$library" | sed -n 's/.*DW_AT_producer.*: //p' | sort -u)
  for flag in $flags "$branch_flag"; do
    grep -vq -e " $flag\b" <<<"$producers" && fail "a file was compiled without $flag"
  done
  grep -q -e '-fno-semantic-interposition' <<<"$producers" && fail "compiled with -fno-semantic-interposition"
  grep '"command"' "$(dirname "$library")/compile_commands.json" | grep " $PWD/src/" | grep -vq -e '-D_FORTIFY_SOURCE=3' &&
    fail "a file was compiled without -D_FORTIFY_SOURCE=3"
  return 0
}

# Every function has unwind data from its first byte on.
check_unwind() {
  local bare
  bare=$(LC_ALL=C comm -23 \
    <(readelf -sW "$1" | awk '$4 == "FUNC" && $7 != "UND" { print $2 }' | LC_ALL=C sort -u) \
    <(readelf --debug-dump=frames "$1" | sed -n 's/.*FDE.*pc=\([0-9a-f]*\)\.\..*/\1/p' | LC_ALL=C sort -u))
  [ -z "$bare" ] || fail "$(wc -l <<<"$bare") functions have no unwind data, the first at $(head -n 1 <<<"$bare")"
}

check() {
  machine=$1
  local library=$2 relocations name
  case $machine in
    x86_64) marks="IBT, SHSTK" branch_flag=-fcf-protection=full ;;
    aarch64) marks="BTI, PAC" branch_flag=-mbranch-protection=standard ;;
    *) echo "hardening: $machine is not known here"; exit 1 ;;
  esac
  check_object "$(readelf -lW "$library")" "$(readelf -dW "$library")" "$(readelf -nW "$library")"
  check_imports "$(nm -D --undefined-only "$library" | awk '{ sub(/@.*/, "", $2); print $2 }')"
  check_flags "$library"
  check_unwind "$library"
  relocations=$(readelf -rW "$library" | awk '{ sub(/@.*/, "", $5); print $5 }')
  for name in $replaceable; do
    grep -qx "$name" <<<"$relocations" || fail "$name is called directly: an application cannot replace it"
  done
  [ $bad -ne 0 ] || echo "hardening: $machine: RELRO, BIND_NOW, $marks, stack protector, fortified, $(du -b "$library" | cut -f1) bytes with debug information"
}

native=$(uname -m)
library=$(scripts/built-library.sh)
check "$native" "$library"
if [ "$native" != aarch64 ]; then
  if command -v aarch64-linux-gnu-g++ >/dev/null; then
    scripts/build.sh aarch64
    check aarch64 "$PWD/build/aarch64/libzt_base.so.0.4.203"
  else
    echo "hardening: aarch64: skipped, no cross compiler (package g++-aarch64-linux-gnu)"
  fi
fi
exit $bad
