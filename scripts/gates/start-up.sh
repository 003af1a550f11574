#!/usr/bin/env bash
# Nothing of ours runs when the shared object is loaded or unloaded: no object of the archive has a
# constructor, a destructor or a guarded static.
set -euo pipefail
cd "$(dirname "$0")/../.."
archive=$(dirname "$(scripts/built-library.sh)")/libzt_base.a
sections=$(readelf -SW "$archive" | grep -oE '\.(init_array|fini_array|ctors|dtors|preinit_array)[^ ]*' || true)
[ -z "$sections" ] || { echo "start-up: objects hold sections" $sections; exit 1; }
symbols=$(nm "$archive" | grep -E '__cxa_(guard|atexit|throw)|_GLOBAL__sub_I|__gxx_personality|_Zn[wa]m|_Zd[la]Pv|atexit' || true)
[ -z "$symbols" ] || { echo "$symbols"; echo "start-up: objects use the C++ run time or exit handlers"; exit 1; }
