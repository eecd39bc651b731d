#!/bin/sh
# portable.sh WORK: the library compiles without a warning and links beyond what the other builds show: by clang++ with libc++,
# where an example runs too, and by MinGW-w64 as a DLL, with an example that is not run. Windows has no converter that the
# libzrz here knows; there the one of tests/foreign_zrz stands for a site's own.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
work=$1
example=$root/examples/uuid_roundtrip
mkdir -p "$work"

build() {
    name=$1
    shift
    cmake -S "$root" -B "$work/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZRASN_WERROR=ON -DZRASN_TESTS=OFF \
        -DZRASN_FUZZ=OFF -DZRASN_TOOL=OFF "$@" >"$work/$name.log"
    cmake --build "$work/$name" --target zrasn zrasn_static >>"$work/$name.log" || { tail -n 40 "$work/$name.log" >&2; exit 1; }
}

build libcxx -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS=-stdlib=libc++
clang++ -std=c++17 -stdlib=libc++ -I "$root/src" -I "$root" "$example.cpp" -L "$work/libcxx/src" -L "$work/libcxx/src/zrz" \
    -lzrasn -lzrz -o "$work/libcxx/example"
LD_LIBRARY_PATH=$work/libcxx/src:$work/libcxx/src/zrz "$work/libcxx/example" | cmp - "$example.out"
ldd "$work/libcxx/src/libzrasn.so" | grep -q 'libc++' || { echo "not linked with libc++" >&2; exit 1; }
echo "clang++ with libc++: builds, and an example runs"

mingw=x86_64-w64-mingw32
foreign=$root/tests/foreign_zrz
$mingw-g++-posix -std=c++17 -I "$foreign" -I "$root/src" -c "$foreign/zrz.cpp" -o "$work/zrz.o"
rm -f "$work/libforeign.a"
$mingw-ar rcs "$work/libforeign.a" "$work/zrz.o"
build mingw -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_CXX_COMPILER=$mingw-g++-posix \
    -DZRASN_ZRZ_LIBRARY="$work/libforeign.a" -DZRASN_ZRZ_INCLUDE_DIR="$foreign"
$mingw-g++-posix -std=c++17 -Wall -Wextra -Werror -I "$root/src" -I "$root" "$example.cpp" -L "$work/mingw/src" -lzrasn \
    -o "$work/mingw/example.exe"
$mingw-objdump -p "$work/mingw/example.exe" | grep -q 'DLL Name: libzrasn' || { echo "not linked with the DLL" >&2; exit 1; }
echo "MinGW-w64: builds, and an example links with the DLL"
