#!/usr/bin/env bash
# Installs, by name and with apt, what is missing on a Debian 12 machine. Does nothing when all is there.
#   scripts/setup.sh build   what builds the library, and builds and runs the examples
#   scripts/setup.sh test    also what the tests need
#   scripts/setup.sh bench   what builds the library and the benchmarks
#   scripts/setup.sh         all of these, and what the gates of .ci/run need
#   scripts/setup.sh coverage  what the tests' coverage is measured with
#   scripts/setup.sh extras  ffmpeg, with which the demo makes a real clip; never needed
set -euo pipefail

build=(g++ cmake make ninja-build python3)
test=(libgtest-dev)
bench=(pkg-config binutils libbenchmark-dev zlib1g-dev libdeflate-dev libisal-dev libssl-dev libglib2.0-dev
       libapr1-dev libboost-dev libinih-dev rapidjson-dev)
gates=(clang clang-format clang-tidy libclang-rt-14-dev pkg-config binutils git g++-aarch64-linux-gnu
       libc6-dev-arm64-cross abigail-tools gdb dpkg-dev debhelper lintian mmdebstrap
       doxygen mandoc groff-base googletest qemu-user gcc spin)
coverage=(gcovr qemu-user)
extras=(ffmpeg)

case "${1:-all}" in
  build) wanted=("${build[@]}") ;;
  test) wanted=("${build[@]}" "${test[@]}") ;;
  bench) wanted=("${build[@]}" "${bench[@]}") ;;
  coverage) wanted=("${build[@]}" "${test[@]}" "${coverage[@]}") ;;
  extras) wanted=("${extras[@]}") ;;
  all) wanted=("${build[@]}" "${test[@]}" "${bench[@]}" "${gates[@]}") ;;
  *) echo "usage: scripts/setup.sh [build|test|bench|coverage|extras|all]" >&2; exit 2 ;;
esac

missing=()
for package in "${wanted[@]}"; do
  state=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
  [ "${state:0:2}" = ii ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "setup: install these as root: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update &&
       "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  tail -n 20 "$log" >&2
  echo "setup: apt could not install ${missing[*]}" >&2
  exit 1
fi
