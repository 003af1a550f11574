#!/usr/bin/env bash
# Builds the fuzz targets, runs each for so long, $JOBS (2) at a time, and prints what they did. Fails when
# one has a finding; its input is then in build/fuzz/findings/.
#   scripts/fuzz.sh [--minimize] SECONDS [TARGET...]
# --minimize: of the inputs at hand, adds to fuzz/corpus/TARGET/ those that reach more code than the ones
# that are there, up to eight a target.
set -euo pipefail
cd "$(dirname "$0")/.."
minimize=no
[ "${1:-}" != --minimize ] || { minimize=yes; shift; }
[[ "${1:-}" =~ ^[0-9]+$ ]] || { echo "usage: scripts/fuzz.sh [--minimize] SECONDS [TARGET...]" >&2; exit 2; }
seconds=$1
shift
scripts/setup.sh
scripts/build.sh fuzz
targets=("$@")
[ $# -gt 0 ] || mapfile -t targets < <(ls build/fuzz/fuzz)
export UBSAN_OPTIONS=print_stacktrace=1 ASAN_OPTIONS=detect_stack_use_after_return=1

# Inputs that a target has found stay in build/fuzz/found/ for the next run.
fuzz_one() {
  local target=$1 seconds=$2
  rm -f build/fuzz/findings/"$target"-*
  mkdir -p build/fuzz/{findings,logs,found/"$target"}
  build/fuzz/fuzz/"$target" -max_total_time="$seconds" -max_len=512 -timeout=20 -print_final_stats=1 \
    -artifact_prefix=build/fuzz/findings/"$target"- build/fuzz/found/"$target" fuzz/corpus/"$target" \
    >build/fuzz/logs/"$target" 2>&1 || true
}
export -f fuzz_one
[ "$seconds" = 0 ] || printf '%s\n' "${targets[@]}" | xargs -P "${JOBS:-2}" -I{} bash -c "fuzz_one {} $seconds"

# How many edges the inputs of a folder reach.
edges() { build/fuzz/fuzz/"$1" -runs=0 -max_len=512 "$2" 2>&1 | grep -a INITED | sed 's/.* cov: \([0-9]*\).*/\1/'; }

if [ $minimize = yes ]; then
  for target in "${targets[@]}"; do
    corpus=fuzz/corpus/$target
    reached=$(edges "$target" "$corpus")
    while read -r input && [ "$(find "$corpus" -type f | wc -l)" -lt 8 ]; do
      kept=$corpus/$(basename "$input" | cut -c1-12)
      [ ! -e "$kept" ] || continue
      cp "$input" "$kept"
      now=$(edges "$target" "$corpus")
      if [ "${now:-0}" -gt "${reached:-0}" ]; then reached=$now; else rm "$kept"; fi
    done < <(find "build/fuzz/found/$target" -type f -size -512c -printf '%s %p\n' | sort -rn | cut -d' ' -f2 | head -n 60)
  done
fi

printf '%-16s %11s %8s %6s %7s  %s\n' target executions a-second edges corpus findings
findings=0
for target in "${targets[@]}"; do
  log=build/fuzz/logs/$target
  found=$(find build/fuzz/findings -name "$target-*" 2>/dev/null | wc -l)
  number() { grep -a "$1" "$log" | tail -n 1 | sed "s/.*$1 *\([0-9]*\).*/\1/"; }
  # A run that ended in another way than the time-out has one, too.
  [ "$found" -gt 0 ] || grep -aq '^Done ' "$log" || found=1
  printf '%-16s %11s %8s %6s %7s  %s\n' "$target" "$(number number_of_executed_units:)" \
    "$(number average_exec_per_sec:)" "$(number ' cov:')" "$(find "fuzz/corpus/$target" -type f | wc -l)" "$found"
  findings=$((findings + found))
done
[ $findings -eq 0 ] || { echo "fuzz: findings, see build/fuzz/findings/ and build/fuzz/logs/"; exit 1; }
