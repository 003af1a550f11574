#!/usr/bin/env bash
# Includes point downwards only: base < os < container < service; format and media stand on base.
# Named exceptions: the log prefix reads the thread id, the thread record embeds a watchdog entry.
set -euo pipefail
cd "$(dirname "$0")/../.."

layer_of_header() {
  case $1 in
    export | list | status | version | memory | string | log | hex) echo base ;;
    time | mutex | ids | event | thread | backtrace | mmap) echo os ;;
    queue | ring_buf | rbtree | heap | heap_window | id_pool | list_sort | mem_heap) echo container ;;
    ntf_mgr | timer_mgr | watchdog | ptz | ptz_internal) echo service ;;
    ini | json_fmt | base64 | crc | md5 | sha) echo format ;;
    fourcc | hdmi_info_frame | tsw | numeric | flash) echo media ;;
    *) echo "unknown" ;;
  esac
}

# What each layer may include besides itself.
declare -A below=(
  [base]="" [os]="base" [container]="base os" [service]="base os container"
  [format]="base" [media]="base"
)
bad=0
check() {
  local file=$1 layer=$2 included=$3 target=$4
  [ "$target" = "$layer" ] && return 0
  grep -qw "$target" <<<"${below[$layer]}" && return 0
  case "$file:$included" in
    src/base/log*:zt/ids.h | src/os/thread*:zt/watchdog.h | include/zt/thread.h:zt/watchdog.h) return 0 ;;
    src/media/tsw*:zt/heap.h | include/zt/tsw.h:zt/heap.h) return 0 ;;
  esac
  echo "layers: $file ($layer) includes $included ($target)"
  bad=1
}

while IFS=: read -r file included; do
  case $file in
    include/zt/base.h) continue ;;
    include/zt/*) layer=$(layer_of_header "$(basename "$file" .h)") ;;
    *) layer=$(cut -d/ -f2 <<<"$file") ;;
  esac
  case $included in
    zt/*) target=$(layer_of_header "$(basename "$included" .h)") ;;
    *) target=${included%%/*} ;;
  esac
  check "$file" "$layer" "$included" "$target"
done < <(grep -rnoE '^#include "[^"]+"' include src | sed -E 's/^([^:]+):[0-9]+:#include "([^"]+)"/\1:\2/')
exit $bad
