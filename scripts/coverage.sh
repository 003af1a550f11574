#!/usr/bin/env bash
# Coverage of src/ by the tests: a table per folder and what was not reached, on the terminal; every line in
# build/coverage/index.html. docs/reliability.md gives the reasons for what is left.
#   scripts/coverage.sh [ctest arguments]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh coverage
build=build/coverage
# Counters of an earlier build or run would be added to.
[ ! -d $build ] || find $build -name '*.gcda' -delete
scripts/build.sh coverage
cc -shared -fPIC scripts/coverage-dump.c -o $build/coverage-dump.so
LD_PRELOAD=$PWD/$build/coverage-dump.so ctest --preset coverage -j "$(nproc)" "$@" >build/coverage-tests.log 2>&1 || {
  tail -n 40 build/coverage-tests.log
  echo "coverage: a test failed"
  exit 1
}
gcovr --root . --filter src/ --exclude-throw-branches --exclude-unreachable-branches \
  --html-details $build/index.html --json $build/coverage.json $build
python3 - $build/coverage.json <<'EOF'
import collections
import json
import sys

folders, missed = collections.defaultdict(lambda: [0] * 4), []
for file in json.load(open(sys.argv[1]))["files"]:
    for line in file["lines"]:
        if line["gcovr/noncode"]:
            continue
        taken = [branch["count"] > 0 for branch in line["branches"]]
        for name in (file["file"].split("/")[1], "all"):
            sums = folders[name]
            sums[0] += line["count"] > 0
            sums[1] += 1
            sums[2] += sum(taken)
            sums[3] += len(taken)
        if line["count"] == 0 or not all(taken):
            what = f"{taken.count(False)} of {len(taken)} branches" if line["count"] else "not run"
            missed.append(f"{file['file']}:{line['line_number']}: {what}")
print("folder       lines                 branches")
for name, (run, lines, taken, branches) in sorted(folders.items(), key=lambda row: (row[0] == "all", row[0])):
    print(f"{name:10} {run:5}/{lines:<5} {100 * run / lines:5.1f} %   "
          f"{taken:5}/{branches:<5} {100 * taken / branches:5.1f} %")
print("\n".join(["", "not reached:"] + missed))
EOF
echo "every line: $build/index.html"
