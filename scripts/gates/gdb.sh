#!/usr/bin/env bash
# gdb finds the pretty printers by itself beside the installed library and prints one record of each kind
# as packaging/gdb/expected.txt says, from a live process; the names of the statuses are the library's.
#   scripts/gates/gdb.sh --show   prints what gdb says
set -euo pipefail
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "gdb: $1"; exit 1; }

{
  cmake -S . -B build/gdb -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_INSTALL_LIBDIR=lib &&
    cmake --build build/gdb -j "$(nproc)" && cmake --install build/gdb --prefix "$work/installed"
} >build/gdb.log 2>&1 || { tail -n 20 build/gdb.log; fail "the library does not build"; }
gcc -std=c11 -Wall -Wextra -Werror -Wno-unused-variable -g -O0 -I"$work/installed/include" packaging/gdb/records.c -o "$work/records" \
  -L"$work/installed/lib" -lzt_base -Wl,-rpath,"$work/installed/lib" || fail "the program does not build"

scripts=$work/installed/share/gdb/auto-load
cat >"$work/commands" <<'C'
set confirm off
set print address off
set print pretty on

break done
run
up
python
for name in ('bad', 'status', 'own', 'list', 'torn', 'unset', 'queue', 'ring', 'tree', 'rows[1].node', 'heap', 'pool', 'region',
             'dogs', 'news', 'no_news', 'ptz', 'held', 'worker'):
    print('%s = %s' % (name, gdb.parse_and_eval(name).format_string(symbols=True, address=False)))
for number in range(-2, 56):
    name = gdb.parse_and_eval('zt_get_status_code(%d)' % number)
    own = gdb.Value(number).cast(gdb.lookup_type('zt_status_t')).format_string()
    if 0 <= number < 55 and own != '%d (%s)' % (number, name.string()):
        print('status %d is %s, not %s' % (number, name, own))
end
kill
C
gdb -nx -batch -iex "add-auto-load-scripts-directory $scripts" -iex "add-auto-load-safe-path $work" \
  -x "$work/commands" "$work/records" >"$work/output" 2>&1 || { tail -n 20 "$work/output"; fail "gdb fails"; }
# Addresses, thread ids and times differ from run to run.
sed -n '/^bad = /,$p' "$work/output" | grep -vE '^\[(Inferior|Thread|New Thread)' |
  sed -E 's/0x[0-9a-f]{6,}/ADDRESS/g; s/LWP [0-9]+/LWP N/; s/alive at [0-9]+/alive at N/' >"$work/shown"
[ "${1:-}" != --show ] || { cat "$work/shown"; exit 0; }
diff packaging/gdb/expected.txt "$work/shown" || {
  head -n 5 "$work/output"
  fail "gdb shows other texts (>) than packaging/gdb/expected.txt (<)"
}
echo "gdb: $(grep -cE '^[a-z_0-9.]+(\[1\].node)? = ' packaging/gdb/expected.txt) records print as expected"
