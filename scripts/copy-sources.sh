#!/usr/bin/env bash
# Copies the files of the checkout as they are, without what git ignores: scripts/copy-sources.sh DIRECTORY
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p "$1"
{ git ls-files -z --cached --others --exclude-standard | xargs -0 ls -d 2>/dev/null || true; } | tar -c -T - | tar -x -C "$1"
