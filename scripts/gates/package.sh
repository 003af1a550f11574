#!/usr/bin/env bash
# The Debian packages build, lintian finds no error and no warning, and they serve on a bare system
# (which is left out, with a word, where no chroot can be made).
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/package.sh
log=build/packages/lintian.log
lintian --allow-root --profile debian --fail-on error,warning build/packages/*_"$(dpkg --print-architecture)".changes >"$log" 2>&1 &
lintian=$!
checked=0
scripts/package-check.sh || checked=$?
wait $lintian || { cat "$log"; echo "package: lintian finds errors or warnings"; exit 1; }
[ $checked -eq 0 ] || [ $checked -eq 77 ]
