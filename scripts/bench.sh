#!/usr/bin/env bash
# Runs the benchmarks and prints one table of ratios.
#   scripts/bench.sh             all of them, in about five minutes
#   scripts/bench.sh FILTER      those whose name, case/size/who, matches the regular expression
#   scripts/bench.sh --publish   all of them, and writes docs/performance.md and docs/performance.svg
set -euo pipefail
cd "$(dirname "$0")/.."
publish=()
filter=.
case "${1:-}" in
  --publish) publish=(--publish build/bench) ;;
  -*) echo "usage: scripts/bench.sh [--publish | FILTER]" >&2; exit 2 ;;
  ?*) filter=$1 ;;
esac

scripts/setup.sh bench
scripts/build.sh bench
build=build/bench
# Random interleaving: a disturbance of the machine meets all of a case's rows, not one.
"$build/bench/zt_bench" --benchmark_filter="$filter" --benchmark_min_time=0.04 \
  --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true \
  --benchmark_out="$build/results.json" --benchmark_out_format=json >"$build/run.log" 2>&1 ||
  { tail -n 20 "$build/run.log"; echo "bench: the benchmarks failed"; exit 1; }
python3 -B scripts/bench-report.py "$build/results.json" "${publish[@]}"
