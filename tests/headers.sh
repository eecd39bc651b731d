#!/bin/sh
# headers.sh BUILD WORK CMAKE COMPILER [FLAG...]: every header that BUILD installs compiles when it is the only one included,
# without exceptions and RTTI (but for asn1/codec), and all of them, with both, beside <uuid/uuid.h> (uuid-dev), as
# base_idls/zrnbase_asn.h says.
set -u
build=$1
work=$2
cmake=$3
shift 3
rm -rf "$work"
"$cmake" --install "$build" --component development --prefix "$work" >/dev/null || exit 1
cd "$work/include/zrasn" || exit 1

headers=$(find . -name '*.h' | sed 's,^\./,,' | sort)
[ -n "$headers" ] || { echo "no headers below $PWD" >&2; exit 1; }

compiles() {
    "$@" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Wnon-virtual-dtor -Werror -fsyntax-only -I . -x c++ -
}

status=0
for header in $headers; do
    bare='-fno-exceptions -fno-rtti'
    case $header in asn1/codec/*) bare= ;; esac
    # shellcheck disable=SC2086
    echo "#include \"$header\"" | compiles "$@" $bare || { echo "does not compile alone: $header" >&2; status=1; }
done
{ sed -nE 's,^// +(#.*uuid.*),\1,p' base_idls/zrnbase_asn.h; cat << 'END'; } | compiles "$@" ||
#include "zrasn/records.h"
static_assert(sizeof(uuid_t::node) == 6 && sizeof(other_uuid_t) == 16);
int parse(const char* text, other_uuid_t& id, sec_id_t& holder) { return uuid_parse(text, id) + holder.uuid.time_mid; }
END
    { echo "does not compile beside <uuid/uuid.h>" >&2; status=1; }
exit $status
