#!/usr/bin/env bash
# Tries the packages of build/packages on a bare Debian 12: a chroot with a compiler, CMake and pkg-config.
# Installs them, builds and runs the programs of tests/consumer and the example against the installed library,
# removes the packages and looks for what they left. Run as root, with the package mmdebstrap installed.
# Leaves with 77 where no chroot can be made.
#   scripts/package-check.sh [DIRECTORY]   where to make the chroot; a base system there is used again
set -euo pipefail
cd "$(dirname "$0")/.."
fail() { echo "package-check: $1"; exit 1; }
cannot() { echo "package-check: left out: $1"; exit 77; }

[ "$(id -u)" -eq 0 ] || cannot "not root"
command -v mmdebstrap >/dev/null || cannot "no mmdebstrap"
# In a mount namespace of its own nothing stays mounted, however this ends.
if [ "${1:-}" != --inside ]; then
  unshare --mount true 2>/dev/null || cannot "no mount namespaces here"
  exec unshare --mount --propagation private "scripts/$(basename "$0")" --inside "$@"
fi
arch=$(dpkg --print-architecture)
scratch=$(mktemp -d)
root=${2:-$scratch/root}
clean_up() {
  umount "$root/proc" "$root/dev" 2>/dev/null || true
  rm -rf --one-file-system "$scratch"
}
trap clean_up EXIT
log=$scratch/log

if [ ! -x "$root/usr/bin/cmake" ]; then
  mmdebstrap --quiet --variant=minbase --include=g++,cmake,make,pkg-config bookworm "$root" >"$log" 2>&1 ||
    { tail -n 5 "$log"; cannot "mmdebstrap fails"; }
fi
mount -t proc proc "$root/proc" && mount --bind /dev "$root/dev" || cannot "nothing can be mounted"
rm -rf "$root/src" "$root/packages"
mkdir "$root/packages"
cp -r tests/consumer "$root/src"
cp build/packages/*_"$arch".deb build/packages/*_all.deb "$root/packages/"

inside() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C chroot "$root" "$@"; }
# Every file that the packages could touch, without what dpkg and ldconfig keep about them.
listing() {
  inside find / -xdev \( -path /proc -o -path /dev -o -path /tmp -o -path /packages -o -path /src -o -path /var/lib/dpkg \
    -o -path /var/log -o -path /var/cache \) -prune -o -print | LC_ALL=C sort
}

names=(libzt-base0 libzt-base-dev libzt-base-doc libzt-base0-dbgsym)
inside dpkg --purge "${names[@]}" >/dev/null 2>&1 || true # of an earlier run in this chroot
before=$(listing)
inside sh -c 'dpkg -i /packages/*.deb' >"$log" 2>&1 || { cat "$log"; fail "the packages cannot be installed"; }

inside sh -euc '
  cd /src
  cc -std=c11 -Wall -Wextra -Wpedantic -Werror consumer.c -o /tmp/c $(pkg-config --cflags --libs zt_base) -pthread
  /tmp/c
  cmake -S . -B /tmp/cpp
  cmake --build /tmp/cpp
  /tmp/cpp/consumer_shared
  /tmp/cpp/consumer_static
  cmake -S /usr/share/doc/libzt-base-dev/examples/pipeline -B /tmp/pipeline
  cmake --build /tmp/pipeline
  /tmp/pipeline/pipeline /bin/bash
  rm -rf /tmp/c /tmp/cpp /tmp/pipeline
' >"$log" 2>&1 || { tail -n 30 "$log"; fail "a program against the installed library fails"; }

inside dpkg --purge "${names[@]}" >"$log" 2>&1 || { cat "$log"; fail "the packages cannot be removed"; }
left=$(diff <(echo "$before") <(listing) || true)
[ -z "$left" ] || { echo "$left"; fail "the packages leave something behind, or took something away"; }
echo "package-check: installed, used from C, C++ and CMake, and removed without a trace"
