#!/bin/sh
# headers.sh ROOT COMPILER [FLAG...]: every public header compiles when it is the only one included.
set -u
root=$1
shift
cd "$root" || exit 1

headers=$( (cd src && find . -name '*.h'; cd .. && find base_idls -name '*.h') | sed 's,^\./,,' | sort)
[ -n "$headers" ] || { echo "no headers below $root" >&2; exit 1; }

status=0
for header in $headers; do
    echo "#include \"$header\"" |
        "$@" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I src -I . -x c++ - ||
        { echo "does not compile alone: $header" >&2; status=1; }
done
exit $status
