#!/usr/bin/env bash
# The reference is complete and without a warning; man pages render, examples compile; links, paths and names in the pages hold.
set -euo pipefail
cd "$(dirname "$0")/../.."
export PYTHONDONTWRITEBYTECODE=1
scripts/reference.sh
pages=$(grep -L '^\.so' build/reference/man/man3/*.3)
# shellcheck disable=SC2086
lint=$(mandoc -Tlint -Wwarning $pages || true)
# shellcheck disable=SC2086
lint+=$(groff -man -Tutf8 -ww -z $pages 2>&1)
[ -z "$lint" ] || { echo "$lint"; echo "reference: man pages with warnings"; exit 1; }
python3 scripts/reference/examples.py
python3 scripts/reference/links.py
