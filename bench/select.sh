#!/bin/sh
# select.sh PROGRAM: instructions of `zrasn decode` for each of 2,000 audit events as a stream and as lines, whole and with
# --where and --select, under valgrind; those of starting the program taken off.
set -eu
program=$(realpath "$1")
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory"
"$program" sample ejauditevent --filled --octets -o event.ber
"$program" sample ejauditevent --filled --hex -o event.hex
for file in event.ber event.hex; do
    awk 'BEGIN { for (i = 0; i < 2000; i++) print ARGV[1] }' $file | xargs cat > many.$file
done
: > none.event.hex
cp event.ber none.event.ber
# count FILE ARGUMENT...
count() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$program" decode ejauditevent -o /dev/null "$@" 2>&1 |
        sed -n 's/.*Collected : //p'
}
row() {
    label=$1
    shift
    printf '%-52s' "$label"
    for form in ber 'hex --lines'; do
        set -- "$@"
        file=many.event.${form%% *} none=none.event.${form%% *} lines=$(echo "$form" | cut -s -d' ' -f2)
        printf '%12d' $((($(count $file $lines "$@") - $(count $none $lines "$@")) / 2000))
    done
    echo
}
printf '%-52s%12s%12s\n' 'instructions for each event' octets lines
row 'whole, --compact' --compact
row 'whole'
row '--where int_a=3' --where int_a=3
row '--where int_a=127 --select name' --where int_a=127 --select name
row '--where elements.attrs.name=x' --where elements.attrs.name=x
