#!/bin/sh
# run.sh SOURCE BUILD WORK CMAKE GXX CLANGXX: installs the build tree BUILD below WORK by its components, moves what was
# installed, and builds and runs programs of somebody else's with it, in the ways, forms, languages and options of the table
# below. Each pair of two columns' values stands in one of its rows at least.
#
#   way        package, tree: find_package, of what was installed and of BUILD; pkgconf: pkg-config; bare: the compiler
#              alone; part, fetch: with the library's sources, by add_subdirectory and FetchContent
#   form       shared, static, or static with -flto
#   exceptions off: neither exceptions nor RTTI
#   program    caller: of the library's records; own: one with records of its own; json: one with those as JSON
set -eu

if [ "$1" = --row ]; then
    read -r way form std compiler exceptions program <<END
$2
END
    name="$way $form c++$std $compiler exceptions:$exceptions $program"
    consumer=$source/tests/install
    out=$work/$way-$form-$program
    mkdir -p "$out"
    cxx=$gxx
    [ "$compiler" = gcc ] || cxx=$clangxx
    [ "$std" != 23 ] || std=2b
    flags="-std=c++$std -Wall -Wextra -Wpedantic -Wconversion -Wnon-virtual-dtor -Werror"
    [ "$form" != lto ] || flags="$flags -flto"
    [ "$exceptions" = on ] || flags="$flags -fno-exceptions -fno-rtti"
    sources=$consumer/consumer.cpp
    [ "$program" != own ] || sources="$consumer/own_program.cpp"
    [ "$program" != json ] || sources="$consumer/own_json.cpp"
    packages=zrasn
    [ "$program" != json ] || packages='zrasn_json zrasn'

    # compile LINK...: with CFLAGS, where there is no CMake.
    compile() {
        objects=
        if [ "$program" != caller ]; then
            objects=$out/own_record.o
            # shellcheck disable=SC2086
            "$cxx" $flags $cflags -fexceptions -c "$consumer/own_record.cpp" -o "$objects"
        fi
        # shellcheck disable=SC2086
        "$cxx" $flags $cflags "$sources" $objects "$@" -o "$out/program"
    }
    # shellcheck disable=SC2046
    build() {
        case $way in
            pkgconf)
                export PKG_CONFIG_PATH="$lib/pkgconfig"
                static=
                [ "$form" = shared ] || static=--static
                cflags=$(pkg-config $static --cflags $packages)
                if [ "$form" = shared ]; then
                    compile $(pkg-config --libs $packages) -Wl,-rpath,"$lib"
                else
                    compile -static $(pkg-config --static --libs $packages)
                fi
                ;;
            bare)
                cflags=-I$prefix/include/zrasn
                if [ "$form" = shared ]; then
                    compile -L"$lib" -lzrasn -Wl,-rpath,"$lib"
                else
                    compile "$lib/libzrasn.a" "$lib/libzrz.a"
                fi
                ;;
            *)
                found=$prefix
                [ "$way" != tree ] || found=$build
                rm -f "$out/CMakeCache.txt"
                "$cmake" -S "$consumer" -B "$out" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$found" \
                    -DWANTED="$version" -DWAY="$way" -DSOURCE="$source" -DFORM="$form" -DPROGRAM="$program" \
                    -DFLAGS="$flags" -DCMAKE_CXX_FLAGS="$machine" -DCMAKE_INSTALL_PREFIX="$out/installed" \
                    -DZRASN_STATIC="$(case $form in shared) echo OFF ;; *) echo ON ;; esac)"
                "$cmake" --build "$out" --target program
                ;;
        esac
    }
    if build >"$out/log" 2>&1 && "$out/program" >>"$out/log" 2>&1; then
        echo "ok: $name"
    else
        cat "$out/log" >&2
        echo "failed: $name" >&2
        exit 1
    fi
    exit 0
fi

source=$1 build=$2 work=$3 cmake=$4 gxx=$5 clangxx=$6 machine=${7:-}
gxx="$gxx" clangxx="$clangxx"
prefix=$work/prefix
version=$(sed -nE 's/^project\(zrasn VERSION ([0-9]+\.[0-9]+)\..*/\1/p' "$source/CMakeLists.txt")
fail() { echo "$*" >&2; exit 1; }

# What the components install is moved once.
mkdir -p "$work"
rm -rf "$prefix" "$work/staged"
install() { "$cmake" --install "$build" --component "$1" --prefix "$work/staged" >/dev/null; }
install runtime
[ "$(find "$work/staged" -type f | grep -cvE '/lib(zrasn|zrz|zrasn_json)\.so\.[0-9.]+$')" -eq 0 ] || fail "more in runtime than libraries"
install development
mv "$work/staged" "$prefix"
lib=$(dirname "$(find "$prefix" -name pkgconfig -type d)")
install tool
install documentation
[ -x "$work/staged/bin/zrasn" ] && [ -s "$work/staged/share/doc/zrasn/docs/api.md" ] || fail "tool or documentation missing"
[ "$(find "$work/staged" -type f | grep -cE '\.(h|a|cmake|so.*)$')" -eq 0 ] || fail "development files in other components"
cp -r "$work/staged/bin" "$prefix"
"$prefix/bin/zrasn" --version >/dev/null || fail "the installed program does not run"

export source build work cmake gxx clangxx machine prefix lib version
# Sources first: they take the longest.
xargs -P 2 -I ROW "$0" --row ROW <<END || exit 1
part shared 17 gcc on own
fetch static 20 clang on caller
bare lto 20 gcc on own
bare shared 17 clang off caller
bare static 23 gcc off own
package lto 23 clang off caller
package shared 20 clang off own
package static 17 gcc on caller
pkgconf lto 23 gcc off caller
pkgconf shared 20 gcc on caller
pkgconf static 17 clang off own
tree lto 17 clang on own
tree shared 23 gcc on own
tree static 20 clang off caller
part shared 20 clang off json
package shared 17 gcc on json
tree static 23 gcc off json
pkgconf shared 17 clang on json
pkgconf static 20 gcc on json
END

# The program of docs/adding-a-record.md.
block() {
    awk -v wanted="$1" '/^```/ { open = !open; count += open; next } open && count == wanted' "$source/docs/adding-a-record.md"
}
mkdir -p "$work/page"
cd "$work/page"
block 3 >notes.h
block 4 >notes.cpp
{ echo '#include "notes.h"'; echo 'int main() {'; block 5; echo 'return type != &zr::record<note_t>::type; }'; } >main.cpp
"$gxx" -std=c++17 -I"$prefix/include/zrasn" notes.cpp main.cpp -L"$lib" -lzrasn -Wl,-rpath,"$lib" -o program
./program || fail "the page's record is not found"
{ echo '#include <cstdio>'; echo '#include "notes.h"'; echo '#include "zrasn/json.h"'; echo 'int main() {'; block 6; echo '}'; } >json.cpp
"$gxx" -std=c++17 -I"$prefix/include/zrasn" notes.cpp json.cpp -L"$lib" -lzrasn_json -lzrasn -Wl,-rpath,"$lib" -o program
[ "$(./program)" = '{"id":"00000000-0000-0000-0000-000000000000","text":"to be read"}' ] || fail "the page's record has other JSON"

# A program with records of its own asks for the codec that it was compiled for; nothing of the static library is visible
# outside of what it is linked into; a project around the library installs none of it, unless it is asked to.
objdump -p "$work/package-shared-own/program" | grep -q 'ZRASN_CODEC_[0-9]' || fail "the codec has no version"
"$gxx" -shared -o "$work/all.so" -Wl,--whole-archive "$lib/libzrasn.a" "$lib/libzrz.a" "$lib/libzrasn_json.a" -Wl,--no-whole-archive
names=$(nm -DC --defined-only "$work/all.so" | grep -vE '^[0-9a-f]+ [uW] .*std::' || true)
[ -z "$names" ] || fail "the static libraries export $names"
rm -rf "$work"/*/installed
"$cmake" --install "$work/part-shared-own" >/dev/null
[ "$(cd "$work/part-shared-own/installed" && find . -type f)" = ./bin/program ] || fail "a part installs itself"
[ ! -e "$work/part-shared-own/zrasn/tests" ] || fail "tests are built inside another project"
grep -q libzrasn.a "$work/fetch-static-caller/_deps/zrasn-build/cmake_install.cmake" || fail "ZRASN_INSTALL makes no rules"
# Another version is not taken for this one.
for other in 0.0.9 99; do
    ! "$cmake" -S "$source/tests/install" -B "$work/other" -G Ninja -DCMAKE_CXX_COMPILER="$gxx" -DWANTED="$other" \
        -DCMAKE_PREFIX_PATH="$prefix" >/dev/null 2>&1 || fail "version $other is found"
done
