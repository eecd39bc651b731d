#!/bin/sh
# run.sh BUILD64 BUILD32 check|update: compares the interface of the shared libraries, in both word sizes, with what is kept
# here: functions with their parameters and versions, and the layout of every type that goes through them. Any difference
# fails and is shown; `update` writes what is there now. docs/abi.md says what may change when.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

status=0
for size in 64 32; do
    build=$1
    [ $size = 64 ] || build=$2
    for library in zrasn zrz zrasn_json; do
        file=$(readlink -f "$(find "$build/src" -name "lib$library.so")")
        kept=$here/lib$library-$size.abi
        abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --drop-undefined-syms \
            --type-id-style hash "$file" >"$work/now.abi"
        if [ "$3" = update ]; then
            xz -9e <"$work/now.abi" >"$kept.xz"
            continue
        fi
        xz -d <"$kept.xz" >"$work/kept.abi"
        found=0
        abidiff "$work/kept.abi" "$work/now.abi" >"$work/report" 2>&1 || found=$?
        [ $found -eq 0 ] && continue
        status=1
        what='other, in a way that old programs do not notice'
        [ $((found & 8)) -eq 0 ] || what='incompatible: old programs do not work with it'
        [ $((found & 3)) -eq 0 ] || what='not compared'
        printf 'The interface of lib%s (%s bits) is %s:\n' "$library" "$size" "$what" >&2
        head -n 60 "$work/report" >&2
    done
done
[ $status -eq 0 ] || echo "What may change when: docs/abi.md. If it is meant, make abi ABI=update writes it to tests/abi." >&2
exit $status
