#!/bin/sh
# run.sh SOURCE BUILD WORK CMAKE CXX: installs the build tree BUILD below WORK, moves what was installed, and builds and
# runs the consumer by find_package, by pkg-config and by add_subdirectory, with the shared and the static library, and a
# program with records of its own.
set -eu
source=$1
build=$2
work=$3
cmake=$4
cxx=$5
consumer=$source/tests/install
prefix=$work/prefix

mkdir -p "$work"
rm -rf "$prefix" "$work/staged" "$work/package"
"$cmake" --install "$build" --prefix "$work/staged" >/dev/null
mv "$work/staged" "$prefix"

check() {
    echo "== $1"
    "$1"
}

# A build tree of its own each; the one with the library's sources is kept, so that it is compiled once.
"$cmake" -S "$consumer" -B "$work/package" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
"$cmake" -S "$consumer" -B "$work/part" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_BUILD_TYPE=Release \
    -DZRASN_SOURCE_DIR="$source" >/dev/null
for tree in package part; do
    "$cmake" --build "$work/$tree"
    check "$work/$tree/with_zrasn"
    check "$work/$tree/with_zrasn_static"
    check "$work/$tree/with_own_record"
done
[ ! -e "$work/part/zrasn/tests" ] || { echo "tests are built inside another project" >&2; exit 1; }

libdir=$(dirname "$(find "$prefix" -name pkgconfig -type d)")
export PKG_CONFIG_PATH="$libdir/pkgconfig"
# shellcheck disable=SC2046
"$cxx" -std=c++17 "$consumer/consumer.cpp" -o "$work/pkg_shared" $(pkg-config --cflags --libs zrasn) -Wl,-rpath,"$libdir"
# shellcheck disable=SC2046
"$cxx" -std=c++17 "$consumer/consumer.cpp" -o "$work/pkg_static" -static $(pkg-config --static --cflags --libs zrasn)
check "$work/pkg_shared"
check "$work/pkg_static"
