#!/bin/sh
# run.sh ROOT WORK ZRASN ZRASN_STATIC ZRZ_STATIC COMPILER [FLAG...]: the pieces of C++ of docs/cookbook.md and docs/adopting.md
# compile, together, and do what the pages say (program.cpp); the plug-in shows one name and has a library of its own.
# ZRASN is the shared library.
set -eu
root=$1 work=$2 shared=$3 static=$4 zrz=$5 compiler=$6
shift 6
rm -rf "$work"
mkdir -p "$work"

# Writes each piece into a file with the name that the comment above it gives.
awk -v work="$work" '
    /^<!-- cookbook: / { file = work "/" $3 ".piece"; next }
    /^<!-- cookbook-file: / { file = work "/" $3; next }
    /^```cpp/ && file { open = 1; next }
    /^```/ { if (open) { close(file); file = "" } open = 0; next }
    open { print > file }
    !open && NF { file = "" }' "$root/docs/cookbook.md" "$root/docs/adopting.md"
pieces=$(ls "$work" | grep -c '\.piece$')
cpp=$(cat "$root/docs/cookbook.md" "$root/docs/adopting.md" | grep -c '^```cpp')
[ $((pieces + 1)) -eq "$cpp" ] && [ "$pieces" -ge 10 ] || { echo "$pieces pieces and a file, but $cpp blocks" >&2; exit 1; }

# Each in a namespace of its own, behind what all include; the one that renames a type of others comes first.
{
    for piece in "$work/uuid.piece" "$work"/*.piece; do grep '^#' "$piece"; done
    for piece in "$work"/*.piece; do
        echo "namespace $(basename "$piece" .piece) {"
        grep -v '^#' "$piece"
        echo '}'
    done
} >"$work/pieces.h"
warnings='-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror'
include="-std=c++17 -I $root/src -I $root"
# shellcheck disable=SC2086
{
    "$compiler" "$@" $include $warnings -DZRASN_STATIC -fPIC -shared "$work/plugin.cpp" -o "$work/plugin.so" -fvisibility=hidden \
        -Wl,--exclude-libs,ALL "$static" "$zrz"
    "$compiler" "$@" $include $warnings -I "$work" "$root/tests/cookbook/program.cpp" -o "$work/program" -pthread \
        "$shared" -Wl,-rpath,"$(dirname "$shared"):$(dirname "$zrz")" -Wl,-rpath-link,"$(dirname "$zrz")" -ldl
}
names=$(nm -D --defined-only "$work/plugin.so" | awk '{ print $3 }')
[ "$names" = count_attributes ] || { echo "the plug-in shows: $names" >&2; exit 1; }
"$work/program" "$work/plugin.so"
