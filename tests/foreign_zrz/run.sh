#!/bin/sh
# run.sh ROOT WORK CMAKE COMPILER: builds the library with the libzrz that lies here, and runs a program that encodes and
# decodes texts by it.
set -eu
root=$1
work=$2
cmake=$3
compiler=$4
here=$root/tests/foreign_zrz

mkdir -p "$work"
"$compiler" -std=c++17 -I "$here" -I "$root/src" -c "$here/zrz.cpp" -o "$work/zrz.o"
ar rcs "$work/libforeign.a" "$work/zrz.o"
"$cmake" -S "$root" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS=-O0 \
    -DCMAKE_BUILD_TYPE=None -DZRASN_TESTS=OFF -DZRASN_FUZZ=OFF -DZRASN_BENCH=OFF -DZRASN_TOOL=OFF -DZRASN_WERROR=ON \
    -DZRASN_ZRZ_LIBRARY="$work/libforeign.a" -DZRASN_ZRZ_INCLUDE_DIR="$here" >/dev/null
"$cmake" --build "$work/build" --target zrasn_static -j 2 >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
"$compiler" -std=c++17 -I "$root/src" -I "$root" -I "$root/tests" "$here/program.cpp" "$root/tests/support/records.cpp" \
    "$root/tests/support/ber_rewriter.cpp" "$work/build/src/libzrasn.a" "$work/libforeign.a" -o "$work/program"
"$work/program"
