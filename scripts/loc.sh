#!/usr/bin/env bash
# Lines of tests over lines of library code, blank and comment lines left out.
#   scripts/loc.sh          prints the figure
#   scripts/loc.sh --check  also fails when it is outside 0.25 to 0.36
set -euo pipefail
cd "$(dirname "$0")/.."

# Drops // and /* */ comments and blank lines of C and C++ and counts what is left.
count() {
  { find "$@" -type f \( -name '*.c' -o -name '*.cpp' -o -name '*.h' -o -name '*.hpp' \) -print0 2>/dev/null || true; } |
    sort -z | xargs -0 -r awk '
      FNR == 1 { inside = 0 }
      {
        line = $0
        if (inside) {
          if (!match(line, /\*\//)) next
          line = substr(line, RSTART + 2); inside = 0
        }
        while (match(line, /\/\*/)) {
          head = substr(line, 1, RSTART - 1); rest = substr(line, RSTART + 2)
          if (match(rest, /\*\//)) line = head substr(rest, RSTART + 2)
          else { line = head; inside = 1; break }
        }
        sub(/^[ \t]*\/\/.*/, "", line)
        if (line ~ /[^ \t]/) n++
      }
      END { print n + 0 }'
}

tests=$(count tests fuzz)
code=$(count include src)
ratio=$(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.3f", c ? t / c : 0 }')
echo "tests $tests / code $code = $ratio (wanted: 0.25 to 0.36)"
if [ "${1:-}" = --check ]; then
  awk -v r="$ratio" 'BEGIN { exit !(r >= 0.25 && r <= 0.36) }' || { echo "loc: $ratio is out of bounds"; exit 1; }
fi
