#!/usr/bin/env bash
# The shared object needs libc alone (the dynamic loader aside) and carries its soname.
set -euo pipefail
cd "$(dirname "$0")/../.."
library=$(scripts/built-library.sh)
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -v '^ld-linux' || true)
[ "$needed" = libc.so.6 ] || { echo "needed: the shared object needs:" $needed; exit 1; }
soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = libzt_base.so.0 ] || { echo "needed: the soname is $soname"; exit 1; }
