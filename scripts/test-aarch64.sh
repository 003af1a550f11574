#!/usr/bin/env bash
# Cross-builds the library and all tests for 64-bit Arm and runs them in an emulator: once on a processor
# that has every extension, and those that choose kernels once more on one without crypto extensions.
#   scripts/test-aarch64.sh [ctest arguments]
# Needs what scripts/setup.sh installs for the gates. No test is left out.
set -euo pipefail
cd "$(dirname "$0")/.."
export QEMU_CPU=max
scripts/build-and-test.sh aarch64 --brief "$@"

# The emulator cannot leave the extensions out, so the kernel of the system is made to say that it has none.
build=$PWD/build/aarch64
echo 'unsigned long getauxval(unsigned long type) { return type * 0; }' |
  aarch64-linux-gnu-gcc -shared -fPIC -x c - -o "$build/no-crypto.so"
for test in base64 digest; do
  qemu-aarch64 -L /usr/aarch64-linux-gnu -E LD_PRELOAD="$build/no-crypto.so" \
    "$build/tests/format/${test}_test" >"$build/no-crypto.log" 2>&1 ||
    { tail -n 50 "$build/no-crypto.log"; echo "aarch64: $test fails without the crypto extensions"; exit 1; }
done
echo "without the crypto extensions: base64 and digest pass"
