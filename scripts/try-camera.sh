#!/usr/bin/env bash
# One case of the camera example, run and checked: scripts/try-camera.sh CASE CAMERA
# Cases: pattern clip slow stall crash signal refused
set -euo pipefail
export TZ=UTC  # unset, the C library reads its zone for every log line, behind a lock unknown to ThreadSanitizer
case=$1
camera=$(realpath "$2")
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$(dirname "$camera")"/{camera.ini,ptz.txt} "$work"
cd "$work"
# Threads of a busy machine may rest for long: only the stall is meant to be noticed.
[ "$case" = stall ] || sed -i 's/^timeout_ms=.*/timeout_ms=30000/' camera.ini

fail() { cat out 2>/dev/null || true; echo "try-camera $case: $1"; exit 1; }

# run WANTED-EXIT-STATUS OPTION...: output goes to the file out.
run() {
  local wanted=$1 code=0
  shift
  "$camera" "$@" >out 2>&1 || code=$?
  [ "$code" -eq "$wanted" ] || fail "exit status $code, not $wanted, of: camera $*"
}
check() { python3 "$here/check-camera-report.py" report.json "$@" || fail "the report is wrong"; }
says() { grep -qE "$1" "${2:-out}" || fail "nothing says \"$1\""; }

# refuse TEXT OPTION...: bad input ends with status 2 and one line that holds the text.
refuse() {
  local text=$1
  shift
  run 2 "$@"
  [ "$(wc -l <out)" -eq 1 ] || fail "more than one line about \"$text\""
  grep -qF -- "$text" out || fail "nothing says \"$text\""
}
# edit SED-EXPRESSION: the configuration with one change, in bad.ini.
edit() { sed "$1" camera.ini >bad.ini; }

case $case in
  pattern)
    run 0 --seconds 2 --report report.json
    says '^all accounted for:'
    check ;;
  clip)
    sed -i 's/^width=.*/width=64/; s/^height=.*/height=48/' camera.ini
    head -c $((64 * 48 * 3 / 2 * 7)) /dev/urandom >clip.yuv
    run 0 --seconds 2 --frames clip.yuv --report report.json
    check --frames clip.yuv
    for format in I422 P010 UYVY '"RGB "'; do  # drawn, every one with another layout
      sed "s/^format=.*/format=$format/" camera.ini >other.ini
      run 0 --config other.ini --seconds 1 --report report.json
      check
    done ;;
  slow)
    run 0 --seconds 2 --slow-encoder 150 --report report.json
    check ;;
  stall)
    for thread in encoder ptz-driver; do
      run 1 --seconds 60 --stall $thread --report report.json
      says "thread \"$thread\" .*has stopped keeping alive"
      says "\"expired\": ?\"$thread\"" report.json
      check
    done ;;
  crash)
    for thread in capture operator; do
      run 139 --seconds 60 --crash $thread
      says "^\*\*\* Thread: $thread \*\*\*\$"
    done ;;
  signal)
    for signal in INT TERM; do
      "$camera" --seconds 60 --report report.json >out 2>&1 &
      pid=$!
      for _ in $(seq 600); do grep -q ' app: ' out && break; sleep 0.1; done
      kill -$signal $pid
      code=0
      wait $pid || code=$?
      [ $code -eq 0 ] || fail "exit status $code after SIG$signal"
      says '"ended_by": ?"signal"' report.json
      check
    done ;;
  refused)
    edit '/^width=/d' && refuse '[video] width: missing' --config bad.ini
    edit 's/^width=.*/width=12x/' && refuse '[video] width: a number from' --config bad.ini
    edit 's/^width=.*/width=641/' && refuse '[video] format: "NV12" needs an even width' --config bad.ini
    edit 's/^format=.*/format=H264/' && refuse '[video] format: "H264" is compressed' --config bad.ini
    edit 's/^format=.*/format=nv12/' && refuse '[video] format: "nv12" is no pixel format' --config bad.ini
    edit 's/^depth=.*/depth=0/' && refuse '[queue] depth: a number from 1' --config bad.ini
    edit 's/^levels=.*/levels=all:info nobody:info/' && refuse '[log] levels: no category' --config bad.ini
    edit 's/^pan_max=170/pan_max=-171/' && refuse '[ptz.mode1] pan_max: below pan_min' --config bad.ini
    edit 's/^zoom_max=8/zoom_max=nan/' && refuse '[ptz.restricted] zoom_max: a number' --config bad.ini
    refuse 'nowhere.ini: ' --config nowhere.ini
    echo 'operator jump 1' >bad.txt && refuse 'bad.txt, line 1: "jump"' --ptz bad.txt
    echo 'nobody wait 1' >bad.txt && refuse 'bad.txt, line 1: no client' --ptz bad.txt
    head -c 400000 /dev/zero >bad.yuv && refuse 'bad.yuv: not a whole number of frames' --frames bad.yuv
    refuse 'nowhere.yuv: ' --frames nowhere.yuv
    refuse 'nowhere/report.json: cannot be written' --report nowhere/report.json
    refuse 'no thread is called "nobody"' --stall nobody
    refuse '--seconds wants a number' --seconds 0
    refuse 'unknown option --fast' --fast ;;
  *) echo "try-camera: unknown case $case"; exit 2 ;;
esac
echo "try-camera $case: ok"
