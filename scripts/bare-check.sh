#!/usr/bin/env bash
# Tries the last commit on a bare Debian 12: makes a chroot that holds git and nothing else of use,
# clones this checkout into it, and runs scripts/demo.sh and scripts/test.sh there. Run as root, with
# the package debootstrap installed; takes about ten minutes.
#   scripts/bare-check.sh [DIRECTORY]   where to make the chroot; a base system there is used again
set -euo pipefail
cd "$(dirname "$0")/.."
root=${1:-$(mktemp -d)/bare}

[ -x "$root/usr/bin/git" ] || debootstrap --variant=minbase --include=git,ca-certificates bookworm "$root" >/dev/null
cp /etc/resolv.conf "$root/etc/resolv.conf"
rm -rf "$root/src"
git clone -q . "$root/src"
mkdir -p "$root/proc" "$root/dev"
mount -t proc proc "$root/proc"
mount --bind /dev "$root/dev"
trap 'umount -l "$root/dev" "$root/proc"' EXIT

for script in scripts/demo.sh scripts/test.sh; do
  echo "== bare: $script"
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C chroot "$root" /src/$script || {
    echo "bare-check: $script fails on a bare machine"
    exit 1
  }
done
echo "== bare: both pass"
