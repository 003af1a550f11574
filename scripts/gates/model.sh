#!/usr/bin/env bash
# Every order of steps that threads in a queue can take, by the model checker spin: with the library's
# hand-over of wake-ups nobody sleeps for ever, without one of its rules somebody does.
set -euo pipefail
cd "$(dirname "$0")/../.."
model=$PWD/tests/models/queue.pml
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# explore PRODUCERS CONSUMERS CAPACITY OPERATIONS [DEFINE...]: what the verifier says, in the file found.
explore() {
  local defines="-DPRODUCERS=$1 -DCONSUMERS=$2 -DCAPACITY=$3 -DOPERATIONS=$4 ${*:5}"
  what="$1 producers, $2 consumers, capacity $3, $4 operations each ${*:5}"
  rm -f found
  spin -a $defines "$model" >log 2>&1 && gcc -O2 -DSAFETY -DCOLLAPSE -DMEMLIM=2000 -o pan pan.c >>log 2>&1 ||
    { cat log; echo "model: the model does not compile"; exit 1; }
  ./pan -E -m100000 >found || true
  states=$(sed -n 's/^ *\([0-9]*\) states, stored$/\1/p' found)
}
complete() {
  explore "$@"
  grep -q 'errors: 0' found && ! grep -qE 'out of memory|max search depth too small|not completed' found ||
    { cat found; echo "model: somebody sleeps for ever: $what"; exit 1; }
  echo "nobody is left asleep in $states states: $what"
}
fails() {
  explore "$@"
  grep -q 'assertion violated' found || { cat found; echo "model: no wake-up is lost, but should be: $what"; exit 1; }
  echo "a wake-up is lost, as it must be: $what"
}

complete 2 2 1 2 -DHAND_OVER
complete 3 2 2 2 -DHAND_OVER
complete 2 3 2 2 -DHAND_OVER
complete 3 3 2 1 -DHAND_OVER
complete 2 2 1 2 -DHAND_OVER -DCANCEL
complete 2 2 2 2 -DHAND_OVER -DCANCEL
fails 2 2 2 2
fails 2 2 1 2 -DCANCEL
fails 2 2 1 2 -DHAND_OVER -DCANCEL -DNO_GIVE_WAY
