#!/usr/bin/env bash
# The Debian packages build, lintian finds no error and no warning, and they serve on a bare system.
# The last needs root and debootstrap; where that cannot run it is left out, which is said.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/package.sh
log=build/packages/lintian.log
lintian --allow-root --profile debian --fail-on error,warning build/packages/*_"$(dpkg --print-architecture)".changes >"$log" 2>&1 ||
  { cat "$log"; echo "package: lintian finds errors or warnings"; exit 1; }

root=$(mktemp -d)
trap 'rm -rf --one-file-system "$root"' EXIT
