#!/bin/sh
# headers.sh ROOT COMPILER [FLAG...]: every public header compiles when it is the only one included, and all of them beside
# <uuid/uuid.h> (uuid-dev), as base_idls/zrnbase_asn.h says.
set -u
root=$1
shift
cd "$root" || exit 1

headers=$( (cd src && find . -name '*.h'; cd .. && find base_idls zrasn -name '*.h') | sed 's,^\./,,' | sort)
[ -n "$headers" ] || { echo "no headers below $root" >&2; exit 1; }

compiles() { "$@" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I src -I . -x c++ -; }

status=0
for header in $headers; do
    echo "#include \"$header\"" | compiles "$@" || { echo "does not compile alone: $header" >&2; status=1; }
done
{ sed -nE 's,^// +(#.*uuid.*),\1,p' base_idls/zrnbase_asn.h; cat << 'END'; } | compiles "$@" ||
#include "zrasn/records.h"
static_assert(sizeof(uuid_t::node) == 6 && sizeof(other_uuid_t) == 16);
int parse(const char* text, other_uuid_t& id, sec_id_t& holder) { return uuid_parse(text, id) + holder.uuid.time_mid; }
END
    { echo "does not compile beside <uuid/uuid.h>" >&2; status=1; }
exit $status
