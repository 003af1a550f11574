#!/usr/bin/env bash
# Each public header alone, twice in one file, as C99, C11, C++17 and C++20, by gcc and clang.
set -uo pipefail
cd "$(dirname "$0")/../.."
flags="-Wall -Wextra -Wpedantic -Werror -fsyntax-only -Iinclude"
bad=0
for header in include/zt/*.h; do
  name=zt/$(basename "$header")
  unit=$(printf '#include "%s"\n#include "%s"\ntypedef int zt_not_empty;\n' "$name" "$name")
  for compiler in "gcc -xc -std=c99" "gcc -xc -std=c11" "clang -xc -std=c99" "clang -xc -std=c11" \
                  "g++ -xc++ -std=c++17" "g++ -xc++ -std=c++20" \
                  "clang++ -xc++ -std=c++17" "clang++ -xc++ -std=c++20"; do
    # shellcheck disable=SC2086
    $compiler $flags - <<<"$unit" || { echo "headers: $name fails with $compiler"; bad=1; }
  done
  grep -q "\"$name\"" include/zt/base.h || [ "$name" = zt/base.h ] ||
    { echo "headers: zt/base.h does not include $name"; bad=1; }
done
exit $bad
