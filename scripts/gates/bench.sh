#!/usr/bin/env bash
# The benchmarks build, and every case runs: each checks its own results, so this is a test too. Nothing
# is measured here.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh bench
scripts/build.sh bench
build=build/bench
fail() { tail -n 20 "$build/run.log"; echo "bench: $1"; exit 1; }
# The cases of a million elements differ from the smaller ones in nothing but time.
"$build/bench/zt_bench" --benchmark_filter=-/1000000/ --benchmark_min_time=0 \
  --benchmark_out="$build/gate.json" --benchmark_out_format=json >"$build/run.log" 2>&1 || fail "a case fails"
"$build/bench/zt_bench_allocations" >"$build/run.log" 2>&1 || fail "the count of allocations fails"
"$build/bench/zt_bench_load_time" 1 "$build"/bench/load_{nothing,zt,glib,apr} >"$build/run.log" 2>&1 ||
  fail "the load time cannot be measured"
python3 -B scripts/bench-report.py "$build/gate.json" --check >"$build/run.log" 2>&1 ||
  fail "bench/expected.tsv and the cases do not agree"
