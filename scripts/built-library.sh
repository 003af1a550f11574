#!/usr/bin/env bash
# Brings the release build up to date and prints the path of its shared object.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh release >&2
echo "$PWD/build/release/libzt_base.so.0.4.203"
