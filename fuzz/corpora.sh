#!/bin/sh
# corpora.sh BUILD DIRECTORY: puts every file of DIRECTORY through every decoder and through the program's verbs, all of
# them built with sanitizers in BUILD: as the contents of an envelope for every record, as the octets of the object tree,
# the raw readers and the converters, in pieces for the framing; bare and behind an envelope for dump and check. What is
# refused is fine; what ends a program badly fails.
set -eu
build=$1
directory=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

replay() {
    "$build/fuzz/$1" --before "$2" "$directory" >"$work/out" 2>"$work/err" ||
        { echo "$1, the last input named here:" >&2; tail -n 20 "$work/err" >&2; exit 1; }
    echo "$1: $(tail -n 1 "$work/out")"
}
replay records_fuzz 0000-0040
replay tool_fuzz 0000-0040
replay framing_fuzz 0000-0004
replay raw_readers_fuzz 00-0f
replay codesets_fuzz 0000-4300:100
"$build/fuzz/tree_fuzz" "$directory" >"$work/out" 2>"$work/err" || { tail -n 20 "$work/err" >&2; exit 1; }
echo "tree_fuzz: $(tail -n 1 "$work/out")"

# The sanitizers' own exit code tells a fault from octets that are refused.
export ASAN_OPTIONS=exitcode=99 UBSAN_OPTIONS=exitcode=99
count=0
find "$directory" -type f >"$work/files"
while read -r file; do
    { printf '\004\002\254\334'; cat "$file"; } >"$work/behind"
    for input in "$file" "$work/behind"; do
        for verb in dump check; do
            status=0
            "$build/tools/zrasn/zrasn" "$verb" "$input" >"$work/out" 2>"$work/err" || status=$?
            [ "$status" -le 4 ] || { echo "zrasn $verb ends with $status: $file" >&2; cat "$work/err" >&2; exit 1; }
            count=$((count + 1))
        done
    done
done <"$work/files"
[ "$count" -gt 0 ] || { echo "no files in $directory" >&2; exit 1; }
echo "dump and check: $count runs"
