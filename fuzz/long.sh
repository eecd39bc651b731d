#!/bin/sh
# long.sh DIRECTORY [SHARE] [TARGET...]: runs the fuzz targets that were built in DIRECTORY as often as below, divided by
# SHARE, and prints a row for each: executions, executions a second, edges, and the execution that found the last edge.
# New inputs are kept in DIRECTORY/corpus, with which the next run begins, and with what a run elsewhere has left in
# $CORPUS; one that ends a target badly in DIRECTORY/crashes, and the run fails.
set -eu
directory=$1
share=${2:-1}
[ $# -lt 2 ] || shift
shift
# The address sanitizer's own stack, which shows uses of what a function left behind, fills up in a long run and is then searched
# at every call: a few executions a second would be left. The tests and the short runs look for such uses.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_stack_use_after_return=0}"

failed=
while read -r name runs length; do
    case " $* " in *" $name "* | '  ') ;; *) continue ;; esac
    mkdir -p "$directory/corpus/$name" "$directory/crashes"
    seeds=$(dirname "$0")/seeds/${name}_fuzz
    [ -d "$seeds" ] || seeds=$(dirname "$0")/seeds/records_fuzz
    kept=${CORPUS:+$CORPUS/$name}
    [ -d "$kept" ] || kept=
    log=$directory/corpus/$name.log
    # The bookkeeping of which inputs are rare costs more than the targets do.
    "$directory/${name}_fuzz" -runs=$((runs / share)) -max_len="$length" -entropic=0 -reduce_inputs=0 -timeout=10 \
        -print_final_stats=1 -dict="$(dirname "$0")/ber.dict" -artifact_prefix="$directory/crashes/$name-" \
        "$directory/corpus/$name" "$seeds" $kept </dev/null >"$log" 2>&1 || failed="$failed $name"
    awk -v name="$name" '
        / cov: / { sub(/^#/, "", $1); for (i = 2; i < NF; ++i) if ($i == "cov:" && $(i + 1) > edges) { edges = $(i + 1); last = $1 } }
        /number_of_executed_units/ { runs = $2 }
        /average_exec_per_sec/ { rate = $2 }
        END { printf "%-12s %10d executions %7d /s %6d edges, the last by %d\n", name, runs, rate, edges, last }' "$log"
done <<END
records 20000000 400
structures 10000000 64
objects 100000 64
tree 5000000 400
raw_readers 42000000 64
codesets 25000000 64
type_codes 10000000 400
framing 10000000 400
tool 10000000 400
END
[ -z "$failed" ] || { echo "fuzz targets that failed:$failed" >&2; exit 1; }
