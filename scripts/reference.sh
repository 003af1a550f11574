#!/usr/bin/env bash
# The reference of the public headers: HTML in build/reference/html, man pages in build/reference/man
# (MANPATH=build/reference/man man zt_queue_add_tail). Warnings are errors. The same sources give the same files.
set -euo pipefail
cd "$(dirname "$0")/.."
out=build/reference
rm -rf "$out"
mkdir -p "$out"
ZT_VERSION=$(sed -nE "s/^  VERSION ([0-9.]+)$/\1/p" CMakeLists.txt)
released=$(sed -nE "s/^## $ZT_VERSION \((.*)\)/\1/p" CHANGELOG.md)
export ZT_VERSION PYTHONDONTWRITEBYTECODE=1
python3 scripts/reference/doxygen_input.py "$out/input"
doxygen -l "$out/layout.xml"  # what it shows, with this library's words for it
sed -i -E -e 's/(type="pages" [^>]*title=")"/\1Guides"/' -e 's/(type="(files|filelist)" [^>]*title=")"/\1Headers"/' \
  -e 's/(type="(structs|classes|classlist)" [^>]*title=")"/\1Records"/' -e 's/(type="globals" [^>]*title=")"/\1Index"/' \
  -e '/<file>/,/<\/file>/ { /<detaileddescription/d; s|<briefdescription.*|<detaileddescription title="About"/>| }' "$out/layout.xml"
(cd "$out/input" && doxygen ../../../docs/reference/Doxyfile) >"$out/log" 2>&1 || {
  sed "s,$PWD/$out/input/,," "$out/log"
  echo "reference: Doxygen has something to say"
  exit 1
}
python3 scripts/reference/man.py "$ZT_VERSION" "$released" "$out/man/man3"
python3 scripts/reference/check.py abi/libzt_base.map "$out/names.xml" "$out/html" "$out/man/man3"
rm -r "$out/input" "$out/names.xml" "$out/layout.xml" "$out/log"
