#!/bin/sh
# run.sh ROOT WORK CMAKE COMPILER [FLAG...]: follows docs/adding-a-record.md in a copy of the sources: the record that its
# lines add is in the registry and goes out and back.
set -eu
root=$1
work=$2
cmake=$3
compiler=$4
shift 4

rm -rf "$work"
mkdir -p "$work"
cd "$root"
cp -r CMakeLists.txt cmake src base_idls "$work"

# The n-th block of code.
lines() {
    awk -v wanted="$1" '/^```/ { open = !open; count += open; next } open && count == wanted' docs/adding-a-record.md
}
header=$work/base_idls/pobj_asn.h
source=$work/base_idls/pobj_asn.cpp
sed -i '/^ZR_DEFINE_MODULE(/,/;$/d' "$source"
lines 1 >>"$header"
lines 2 >>"$source"
count=$({ lines 1; lines 2; } | grep -cvE '^$|^//')
[ "$count" -le 9 ] || { echo "adding a record takes $count lines" >&2; exit 1; }

"$cmake" -S "$work" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="-O0 $*" \
    -DCMAKE_BUILD_TYPE=None -DZRASN_WERROR=ON >/dev/null
"$cmake" --build "$work/build" --target zrasn -j 2 >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
"$compiler" "$@" -std=c++17 -I "$work/src" -I "$work" tests/newcomer/program.cpp -L "$work/build/src" -lzrasn \
    -Wl,-rpath,"$work/build/src:$work/build/src/zrz" -o "$work/program"
"$work/program"
