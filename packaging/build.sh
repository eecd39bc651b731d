#!/bin/sh
# build.sh OUT [DIRECTORY]: builds the Debian packages, for the machine's word size and (on amd64) for i386, from the files
# that git knows, below DIRECTORY (OUT/build), and leaves them in OUT; then lintian judges them. The number in the names of
# the libraries' packages is the first of the project's version, as in their sonames. Two builds give the same octets,
# wherever and whenever they are made.
set -eu
out=$(mkdir -p "$1" && cd "$1" && pwd)
work=${2:-$out/build}
root=$(cd "$(dirname "$0")/.." && pwd)
version=$(sed -nE 's/^project\(zrasn VERSION ([0-9.]+) .*/\1/p' "$root/CMakeLists.txt")
number=${version%%.*}
tree=$work/zrasn-$version

rm -rf "$work"
rm -f "$out"/*.deb
mkdir -p "$tree"
cd "$root"
git ls-files -z | xargs -0 cp --parents -t "$tree"
[ ! -d build/docs/html ] || { mkdir -p "$tree/build/docs" && cp -r build/docs/html "$tree/build/docs"; }
mv "$tree/packaging/debian" "$tree/debian"
cd "$tree/debian"
for name in *@N@*; do mv "$name" "$(echo "$name" | sed "s/@N@/$number/")"; done
SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct)
export SOURCE_DATE_EPOCH
sed -i "s/@N@/$number/g; s/@VERSION@/$version/; s/@DATE@/$(date -u -R -d "@$SOURCE_DATE_EPOCH")/" control changelog
for package in $(sed -n 's/^Package: //p' control); do
    cp "$tree/packaging/lintian-overrides" "$package.lintian-overrides"
done

# Nothing of the caller's that would show in what is built.
export LC_ALL=C.UTF-8 TZ=UTC
unset CXXFLAGS CFLAGS CPPFLAGS LDFLAGS CXX CC CMAKE_CXX_COMPILER_LAUNCHER CMAKE_GENERATOR CMAKE_BUILD_TYPE
umask 022
chmod -R u=rwX,go=rX "$tree"
cd "$tree"
build() {
    dpkg-buildpackage -us -uc -d --no-check-builddeps "$@" >"$work/log" 2>&1 || { tail -n 40 "$work/log" >&2; exit 1; }
}
build -b
mv "$work"/*.deb "$out"
if [ "$(dpkg --print-architecture)" = amd64 ]; then
    build -B -ai386 -Pnopython
    mv "$work"/*.deb "$out"
fi
rm -f "$out"/*-dbgsym_*.deb
lintian --allow-root --fail-on error,warning "$out"/*.deb
ls "$out"/*.deb
