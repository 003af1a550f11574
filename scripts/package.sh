#!/usr/bin/env bash
# Builds the Debian packages of the checkout, as it is, into build/packages.
#   scripts/package.sh [amd64|arm64]   this machine's architecture by default; another one is cross-built
# The reference is part of libzt-base-doc when scripts/reference.sh can make it.
set -euo pipefail
cd "$(dirname "$0")/.."
native=$(dpkg --print-architecture)
arch=${1:-$native}
out=$PWD/build/packages
fail() { echo "package: $1"; exit 1; }

version=$(sed -nE 's/^ *VERSION ([0-9.]+)$/\1/p' CMakeLists.txt)
[ "$version" = "$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)" ] ||
  fail "packaging/debian/changelog is not at version $version"

mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sources=$work/libzt-base-$version
scripts/copy-sources.sh "$sources"
mv "$sources/packaging/debian" "$sources/debian"

kinds=full
if [ "$arch" != "$native" ]; then
  kinds=any # the documentation is the same for all
elif [ -x scripts/reference.sh ]; then
  scripts/reference.sh >"$out/reference.log" 2>&1 || { tail -n 20 "$out/reference.log"; fail "no reference"; }
  cp -r build/reference "$sources/reference"
fi
# A cross build needs a cross compiler and its libc, not the other architecture's packages: no check of those (-d).
options=(--no-sign --build="$([ $kinds = full ] && echo binary || echo any)")
[ "$arch" = "$native" ] || options+=(-d -a"$arch")

rm -f "$out"/*_"$arch".deb "$out"/*_"$arch".changes "$out"/*_"$arch".buildinfo
[ $kinds = any ] || rm -f "$out"/*_all.deb
(cd "$sources" && DEB_BUILD_OPTIONS="nocheck parallel=$(nproc)" dpkg-buildpackage "${options[@]}") >"$out/$arch.log" 2>&1 || {
  grep -vE '^ *$' "$out/$arch.log" | tail -n 40
  fail "dpkg-buildpackage fails"
}
mv "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo "$out/"
echo "package: $(cd "$out" && ls ./*"_$arch.deb" ./*_all.deb 2>/dev/null | sed 's|^\./||' | tr '\n' ' ')"
