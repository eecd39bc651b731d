#!/bin/sh
# run.sh DIRECTORY SECONDS: runs every fuzz target that was built in DIRECTORY for SECONDS. What is found to be new is
# kept in DIRECTORY/corpus; an input that ends a target badly is kept in DIRECTORY/crashes, and the run fails.
set -eu
directory=$1
seconds=$2

failed=
while read -r name seeds; do
    echo "== $name, $seconds s"
    mkdir -p "$directory/corpus/$name" "$directory/crashes"
    [ -d "$seeds" ] || seeds=
    "$directory/$name" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 -verbosity=0 \
        -dict="$(dirname "$0")/ber.dict" \
        -artifact_prefix="$directory/crashes/$name-" "$directory/corpus/$name" ${seeds:+"$seeds"} </dev/null ||
        failed="$failed $name"
done <"$directory/targets"
[ -z "$failed" ] || { echo "fuzz targets that failed:$failed" >&2; exit 1; }
