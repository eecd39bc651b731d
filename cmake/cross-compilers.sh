#!/bin/sh
# cross-compilers.sh DIR: leaves in DIR what Debian's cross builds for arm64 and s390x need and what cannot be installed beside
# the rest: the compilers, which conflict with g++-multilib (for a link in /usr/include alone), and the C library's
# converters between code sets, which belong to those machines' own packages. The packages are fetched by apt-get and
# unpacked, nothing is installed and nothing needs root; what the compilers find below /usr (the Makefile's
# packages_cross) is linked into DIR. Silent when all is there.
set -eu
dir=$1
done=$dir/.unpacked
[ ! -e "$done" ] || exit 0
echo "Unpacking Debian's cross compilers into $dir"
rm -rf "$dir"
mkdir -p "$dir"
cd "$dir"

for machine in arm64:aarch64-linux-gnu s390x:s390x-linux-gnu; do
    name=${machine%:*} triplet=${machine#*:}
    apt-get -q download "gcc-12-$triplet" "g++-12-$triplet" 2>apt.log || { cat apt.log >&2; exit 1; }
    for package in ./*.deb; do dpkg-deb -x "$package" .; done
    rm ./*.deb
    cp -rsn "/usr/lib/gcc-cross/$triplet/12/." "usr/lib/gcc-cross/$triplet/12/"
    ln -s "/usr/$triplet" "usr/$triplet"

    # The C library's package is asked for as on such a machine, with lists of packages of its own.
    mkdir -p apt/lists/partial apt/archives/partial
    for step in update "download libc6"; do
        # shellcheck disable=SC2086
        apt-get -q -o APT::Architecture="$name" -o APT::Architectures="$name" -o Dir::State="$PWD/apt" \
            -o Dir::State::status=/dev/null -o Dir::Cache="$PWD/apt" -o Acquire::Languages=none \
            -o APT::Sandbox::User=root $step >apt.log 2>&1 || { cat apt.log >&2; exit 1; }
    done
    dpkg-deb -x libc6_*.deb apt/libc
    mv "apt/libc/usr/lib/$triplet/gconv" "usr/lib/gconv-$name"
    rm -r apt ./*.deb
done
rm -f apt.log
touch "${done##*/}"
