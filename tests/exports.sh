#!/bin/bash
# exports.sh LIBRARY LIST: the library exports the system's own names and those in LIST and nothing else, exports all
# that LIST names, and needs no other libraries than the language's, the C library and those here.
set -u
library=$1
list=$2

unversioned=$(nm -D --defined-only "$library" | grep -vE '@@(ZRASN|ZRZ|ZRASN_JSON)_([0-9]+\.|CODEC_)[0-9]+$|^0+ A (ZRASN|ZRZ)_')
[ -z "$unversioned" ] || { printf 'exported without a version:\n%s\n' "$unversioned" >&2; exit 1; }
# Function names up to the parameters; what the compiler adds to a class goes by the class's name.
exported=$(nm -DC --defined-only "$library" | grep -vE '^0+ A ' | sed -E 's/^[0-9a-f]+ . //; s/@@.*//' |
    sed -E 's/^(vtable for|typeinfo for|typeinfo name for|VTT for|(non-)?virtual thunk to) //; s/\(.*//' | sort -u)
[ -n "$exported" ] || { echo "$library exports nothing" >&2; exit 1; }
own='^(zr_[A-Za-z0-9_]+|zrAsn[A-Za-z]+|zrasn[A-Za-z0-9_]*|asn_[A-Za-z0-9_]+)(<.*>)?(::[^:]+)?$'
own="$own"'|^(chunk|check_EOC|write[124]d|printableStringCharacterIA5_table|visibleStringCharacterIA5_table|Local2IA5_table|IA52Local_table)$'
own="$own"'|^(UTF8|BMP|U|IA5|P|V|T61)2(UTF8|BMP|U|IA5|P|V|T61)$'
own="$own"'|^zr::record<[a-zA-Z0-9_]+>::type$|^zr::binding<[a-zA-Z0-9_]+>(::[^:]+)?$|^zr::element_(list|array)(::[^:]+)?$'
# Of the library of JSON all are listed.
[ "${library##*libzrasn_json}" = "$library" ] || own='^$'
listed=$(grep -vE '^(#|$)' "$list")

status=0
foreign=$(grep -vE "$own" <<<"$exported" | grep -vxF "$listed")
[ -z "$foreign" ] || { printf 'exported, but not public:\n%s\n' "$foreign" >&2; status=1; }
missing=$(grep -vxF "$exported" <<<"$listed")
[ -z "$missing" ] || { printf 'listed, but not exported:\n%s\n' "$missing" >&2; status=1; }

needed=$(objdump -p "$library" | awk '$1 == "NEEDED" { print $2 }' |
    grep -vE '^(libstdc\+\+\.so\.6|libgcc_s\.so\.1|libc\.so\.6|ld-linux.*|libzrz\.so\.[0-9]+)$|^libzrasn\.so\.[0-9]+$')
[ -z "$needed" ] || { printf 'needs other libraries:\n%s\n' "$needed" >&2; status=1; }
exit $status
