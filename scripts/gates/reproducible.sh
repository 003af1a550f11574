#!/usr/bin/env bash
# Two builds of the same sources, in two source and two build directories, give the same bytes: the
# shared object, the archive and what else is installed, debug information included.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Sources in a path of another length, built by another tool; installed for the same prefix.
build() {
  local sources=$work/$1/sources generator=$2
  scripts/copy-sources.sh "$sources"
  {
    env "${@:3}" cmake -S "$sources" -B "$work/$1/build" -G "$generator" -DCMAKE_INSTALL_PREFIX="/usr" &&
      env "${@:3}" cmake --build "$work/$1/build" -j "$(nproc)" &&
      DESTDIR=$work/$1/installed cmake --install "$work/$1/build"
  } >"$work/log" 2>&1 || { tail -n 30 "$work/log"; echo "reproducible: the build failed"; exit 1; }
}

build a Ninja
build a/longer/path "Unix Makefiles" LC_ALL=C TZ=UTC-5 HOME=/

(cd "$work/a/installed" && find . -type f | LC_ALL=C sort | xargs sha256sum) >"$work/first"
(cd "$work/a/longer/path/installed" && find . -type f | LC_ALL=C sort | xargs sha256sum) >"$work/second"
diff "$work/first" "$work/second" || { echo "reproducible: the files above differ between two builds"; exit 1; }
traces=$(grep -rlF "$work" "$work/a/installed" | sed "s|^$work/a/installed||" || true)
[ -z "$traces" ] || { echo "reproducible: files name the directory they were built in:" $traces; exit 1; }
echo "reproducible: $(wc -l <"$work/first") installed files, equal to the byte"
