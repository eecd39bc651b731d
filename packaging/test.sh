#!/bin/sh
# test.sh DIRECTORY: installs the packages in DIRECTORY on a Debian that has nothing, uses them and removes them, as root in
# a clone of the repository: `make packages-test` runs it so. What installing leaves behind, and needs, is looked at.
set -eu
packages=$(realpath "$1")
work=$(mktemp -d)
fail() { echo "packages: $*" >&2; exit 1; }
apt() { DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 "$@" </dev/null >$work/apt.log 2>&1 || { cat $work/apt.log >&2; fail "apt-get $*"; }; }
installed() { dpkg-query -W -f '${db:Status-Abbrev} ${Package}:${Architecture}\n' | sed -n 's/^ii  //p' | sort; }
files() { find /usr /etc /opt /srv -xdev ! -path '/etc/ld.so.cache' | sort; }

installed >$work/before
files >$work/files-before
apt update
arch=$(dpkg --print-architecture)
python=$(ls "$packages"/python3-zrasn_*_"$arch".deb)
apt install --no-install-recommends $(ls "$packages"/*_"$arch".deb "$packages"/*_all.deb | grep -vF "$python")
others=$(installed | comm -13 $work/before - | grep -vE '^(libzrasn[0-9]+|libzrz[0-9]+|libzrasn-json[0-9]+|libzrasn-dev|libzrasn-doc|zrasn):' || true)
[ -z "$others" ] || fail "installing needs other packages: $others"

# The program.
examples/tool_demo.sh /usr/bin/zrasn examples/acl.json >$work/demo.out
cmp $work/demo.out examples/tool_demo.out
for page in /usr/share/man/man1/zrasn.1.gz /usr/share/doc/libzrasn-doc/docs/api.md /usr/share/doc/zrasn/copyright; do
    [ -s $page ] || case $page in
        /usr/share/man/*) grep -qs '^path-exclude' /etc/dpkg/dpkg.cfg.d/* || fail "$page is missing" ;;
        *) fail "$page is missing" ;;
    esac
done

# The library, by what a program of somebody else's uses: no flags are needed to find it at run time.
apt install --no-install-recommends g++ pkg-config cmake
g++ -std=c++17 examples/uuid_roundtrip.cpp $(pkg-config --cflags --libs zrasn) -o $work/uuid
$work/uuid >$work/uuid.out
cmp $work/uuid.out examples/uuid_roundtrip.out
version=$(sed -nE 's/^project\(zrasn VERSION ([0-9]+\.[0-9]+)\..*/\1/p' CMakeLists.txt)
awk '/^<!-- c-interface: program.c/ { wanted = 1 } /^```/ { if (open) exit; open = wanted; next } open' docs/c-interface.md >$work/program.c
gcc -std=c11 $work/program.c $(pkg-config --cflags --libs zrasn_json) -o $work/program
$work/program
for form in shared static; do
    cmake -S tests/install -B $work/own-$form -DWANTED="$version" -DFORM=$form -DPROGRAM=own -DFLAGS=-std=c++17 >$work/log &&
        cmake --build $work/own-$form >>$work/log || { cat $work/log >&2; fail "own records, $form"; }
    $work/own-$form/program
done

# The module for Python, which needs Python alone.
apt install --no-install-recommends "$python"
/usr/bin/python3 -c 'import zrasn; print(zrasn.decode("sec_id", zrasn.encode("sec_id", {"name": "ada"}))["name"])' >$work/python.out
[ "$(cat $work/python.out)" = ada ] || fail "the module for Python"

# The other word size beside this one.
if ls "$packages"/*_i386.deb >/dev/null 2>&1; then
    dpkg --add-architecture i386
    # An index that is being renewed is not needed, as long as the packages are found.
    (apt update) || true
    apt install --no-install-recommends "$packages"/*_i386.deb
    [ "$(od -An -tu1 -j4 -N1 /usr/bin/zrasn)" -eq 1 ] || fail "the i386 program is none of 32 bits"
    examples/tool_demo.sh /usr/bin/zrasn examples/acl.json >$work/demo.out
    cmp $work/demo.out examples/tool_demo.out
    $work/own-shared/program
fi

# Nothing is left.
apt purge $(dpkg-query -W -f '${binary:Package}\n' '*zrasn*' '*libzrz*')
/sbin/ldconfig
left=$(files | comm -13 $work/files-before - | grep -E 'zrasn|zrz' || true)
[ -z "$left" ] || fail "left behind: $left"
echo "packages: installed, used and removed"
