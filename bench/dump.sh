#!/bin/bash
# dump.sh PROGRAM: what `zrasn dump` and its peers take for large encodings: seconds, the best of five runs. A peer that
# is not installed is left out. Output goes to /dev/null.
set -eu
program=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

python3 - << 'END'
def element(identifier, contents):
    length = len(contents).to_bytes((len(contents).bit_length() + 7) // 8, "big")
    return bytes([identifier, 0x80 + len(length)]) + length + contents
integers = b"".join(b"\x02\x04" + (0x40000000 + i).to_bytes(4, "big") for i in range(1000000))
open("integers", "wb").write(element(0x30, integers))
pairs = b"".join(b"\x30\x0f\x06\x03\x55\x04\x03\x0c\x08" + b"%08d" % i for i in range(333333))
open("pairs", "wb").write(element(0x30, pairs))
open("string", "wb").write(element(0x04, bytes(100000000)))
open("levels", "wb").write(b"\x30\x80" * 1000000 + b"\x00\x00" * 1000000)
END

cat > measure.py << 'END'
import os, subprocess, sys, time
best = None
for _ in range(5):
    with open(os.devnull, "w") as nowhere:
        begin = time.perf_counter()
        refused = subprocess.run(sys.argv[1:], stdout=nowhere, stderr=nowhere).returncode != 0
        taken = time.perf_counter() - begin
    best = taken if best is None else min(best, taken)
print(f"{'gives up' if refused else f'{best:.3f} s':>18}")
END

printf '%-24s %18s %18s %18s\n' '' 'zrasn dump' 'dumpasn1' 'openssl asn1parse'
while read -r file what; do
    printf '%-24s' "$what"
    for peer in "$program dump" 'dumpasn1' 'openssl asn1parse -inform DER -in'; do
        if command -v "${peer%% *}" > /dev/null; then
            printf ' %s' "$(python3 measure.py $peer "$file")"
        else
            printf ' %18s' 'not installed'
        fi
    done
    echo
done << 'END'
integers 1,000,000 INTEGERs
pairs 999,999 elements, mixed
string a string of 100 MB
levels 1,000,000 levels
END
