#!/bin/bash
# allocators.sh BUILD: what decoding and releasing an access-control list of 16 entries takes with the allocators that are
# installed (Debian's libmimalloc2.0, libjemalloc2, libtcmalloc-minimal4), as the least of nine runs in turns, in
# nanoseconds. BUILD is a build directory, such as build/release.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
g++ -std=c++17 -O2 -I "$root/src" -I "$root" "$root/bench/allocators.cpp" -o "$work/program" \
    -L "$1/src" -L "$1/src/zrz" -lzrasn -lzrz -Wl,-rpath,"$(realpath "$1/src"):$(realpath "$1/src/zrz")"
for round in 1 2 3 4 5 6 7 8 9; do
    for library in '' libmimalloc.so.2 libjemalloc.so.2 libtcmalloc_minimal.so.4; do
        [ -z "$library" ] || ldconfig -p | grep -qF "$library " || continue
        echo "${library:-the C library} $(LD_PRELOAD=$library "$work/program")"
    done
done | awk '{ time = $NF; $NF = ""; if (!($0 in least) || time < least[$0]) least[$0] = time }
    END { for (name in least) printf "%-28s%6d ns\n", name, least[name] }' | sort -k1,1r
