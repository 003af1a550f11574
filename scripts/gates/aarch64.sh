#!/usr/bin/env bash
# Every test on 64-bit Arm, in an emulator.
set -euo pipefail
exec "$(dirname "$0")/../test-aarch64.sh"
