#!/usr/bin/env bash
# Builds and installs the library, builds the examples from the installed tree, and runs them: the
# camera for two seconds, with a stalled and with a crashing thread, then the small pipeline on a file.
#   scripts/demo.sh [FILE]   FILE is what the pipeline counts
# The camera plays a clip made by ffmpeg where that is installed, its own test pattern elsewhere. Its
# report, and the page made of it, stay in build/demo.
set -euo pipefail
file=$(realpath "${1:-/bin/bash}")
cd "$(dirname "$0")/.."
scripts/setup.sh build

build=$PWD/build/demo
prefix=$build/installed
mkdir -p "$build"
{
  cmake -S . -B "$build/library" -G Ninja -DCMAKE_INSTALL_PREFIX="$prefix" &&
    cmake --build "$build/library" --target install -j "$(nproc)" &&
    for example in camera pipeline; do
      cmake -S examples/$example -B "$build/$example" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo &&
        cmake --build "$build/$example" -j "$(nproc)" || exit 1
    done
} >"$build/log" 2>&1 || { tail -n 40 "$build/log"; echo "demo: the build failed"; exit 1; }
camera=$build/camera/camera
pipeline=$build/pipeline/pipeline
report=$build/report.json
page=$build/report.html

# fail MESSAGE: with the output of the program that ran last.
fail() { echo "$output"; echo "demo: $1"; exit 1; }
# attempt WANTED-EXIT-STATUS COMMAND...: its output goes to $output.
attempt() {
  local wanted=$1 code=0
  shift
  output=$("$@" 2>&1) || code=$?
  [ "$code" -eq "$wanted" ] || fail "exit status $code instead of $wanted: $*"
}

clip=()
if command -v ffmpeg >/dev/null && ffmpeg -v error -nostdin -y -f lavfi -i testsrc2=size=640x360:rate=30 \
  -frames:v 30 -pix_fmt nv12 -f rawvideo "$build/clip.nv12" 2>"$build/ffmpeg.log"; then
  clip=(--frames "$build/clip.nv12")
fi

echo "== camera: two seconds of ${clip[1]:-its test pattern}"
attempt 0 "$camera" --seconds 2 --report "$report" "${clip[@]}"
echo "$output"
if command -v python3 >/dev/null; then
  attempt 0 python3 scripts/check-camera-report.py "$report" "${clip[@]}"
  echo "$output"
  if [ -f scripts/report.py ]; then
    attempt 0 python3 scripts/report.py "$report" "$page"
    echo "page: $page"
  fi
fi

echo "== camera --slow-encoder 100: the queue drops the oldest frames, and says so"
attempt 0 "$camera" --seconds 2 --slow-encoder 100
grep -E '^(frames|all accounted)' <<<"$output"

echo "== camera --stall encoder: the watchdog names the thread and the run ends in order"
attempt 1 "$camera" --seconds 60 --stall encoder
grep -E 'watchdog: thread "encoder" .*has stopped keeping alive' <<<"$output" ||
  fail "the watchdog did not name the thread"
grep -E '^(frames|watchdog|NOT all accounted)' <<<"$output"

echo "== camera --crash capture: the crash report"
attempt 139 "$camera" --seconds 60 --crash capture
sed -n '/Dump stack start/,/Dump stack end/p' <<<"$output"
grep -q '^\*\*\* Thread: capture \*\*\*$' <<<"$output" || fail "no crash report"

echo "== pipeline $file"
attempt 0 "$pipeline" "$file"
tail -n 1 <<<"$output"
counted=$(sed -n 's/^total: \([0-9]*\) bytes.*/\1/p' <<<"$output")
size=$(wc -c <"$file")
[ "$counted" = "$size" ] || fail "counted $counted of $size bytes"
attempt 1 "$pipeline" --stall "$file"
grep -q 'thread "worker-1".*has stopped keeping alive' <<<"$output" || fail "the watchdog did not name the thread"
attempt 139 "$pipeline" --crash "$file"
grep -q '^\*\*\* Thread: worker-1 \*\*\*$' <<<"$output" || fail "no crash report"
echo "its stall and its crash were reported, too"

echo "== the camera accounted for every frame and command, the pipeline counted $counted bytes as wc -c does"
