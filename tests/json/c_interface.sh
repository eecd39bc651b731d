#!/bin/sh
# c_interface.sh ROOT WORK JSON ZRASN ZRZ [FLAG...]: the programs of docs/c-interface.md, compiled as C11 and C++17 against the
# shared libraries, print what the page shows; what Python finds through the C interface is as it should be.
set -eu
root=$1 work=$2 json=$3 directories=$(dirname "$3"):$(dirname "$4"):$(dirname "$5")
shift 5
rm -rf "$work"
mkdir -p "$work"
cd "$work"
awk '/^<!-- c-interface: / { file = $3; next }
     /^```/ { if (open) { close(file); file = ""; open = 0 } else if (file) open = 1; next }
     open { print > file }' "$root/docs/c-interface.md"
warnings='-Wall -Wextra -pedantic -Werror'
for compiler in "gcc -std=c11" "clang -std=c11" "g++ -x c++ -std=c++17"; do
    command -v "${compiler%% *}" >/dev/null || continue
    # shellcheck disable=SC2086
    $compiler "$@" $warnings -I "$root" program.c -x none "$json" -Wl,-rpath,"$directories" -Wl,-rpath-link,"$directories" -o program
    ./program | diff - printed
done
[ -x program ] || { echo 'no compiler of C' >&2; exit 1; }
[ $# -eq 0 ] && command -v python3 >/dev/null || exit 0  # of the other word size
export LD_LIBRARY_PATH="$directories"
python3 program.py | grep -qx '6ba7b810-9dad-11d1-80b4-[0-9a-f]*'
python3 "$root/tests/json/schemas.py" "$(basename "$json")"
