#!/usr/bin/env bash
# The fuzz targets build, and each runs for a second.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/fuzz.sh 1
