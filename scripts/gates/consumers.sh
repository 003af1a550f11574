#!/usr/bin/env bash
# The installed library as others use it: C through pkg-config, C++ through find_package (shared and
# static), the README's plain compiler line. The installed tree is moved first, to prove it can be.
set -euo pipefail
cd "$(dirname "$0")/../.."
source_dir=$PWD
scripts/build.sh release
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "consumers: $1"; exit 1; }

cmake --install build/release --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
prefix=$work/moved
pc=$(dirname "$(find "$prefix" -name zt_base.pc)")
libdir=$(dirname "$pc")
export LD_LIBRARY_PATH=$libdir

# shellcheck disable=SC2046
gcc -std=c11 -Wall -Wextra -Wpedantic -Werror tests/consumer/consumer.c -o "$work/c" \
  $(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs zt_base) -pthread || fail "the C consumer does not build"
"$work/c" || fail "the C consumer fails"

cmake -S tests/consumer -B "$work/cpp" -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1 &&
  cmake --build "$work/cpp" >>"$work/log" 2>&1 || { cat "$work/log"; fail "the C++ consumers do not build"; }
"$work/cpp/consumer_shared" || fail "the shared C++ consumer fails"
LD_LIBRARY_PATH='' "$work/cpp/consumer_static" || fail "the static C++ consumer fails"
if readelf -d "$work/cpp/consumer_static" | grep -q libzt_base; then fail "the static consumer needs the shared object"; fi
cd "$source_dir"
