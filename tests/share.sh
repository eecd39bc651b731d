#!/bin/sh
# share.sh: what share of the code are tests: the lines of C and C++ in tests/ and fuzz/ that are neither blank nor a
# comment of their own, over all in the repository. It is to stay below a third.
set -eu
cd "$(dirname "$0")/.."

code() {
    git ls-files -- "$@" | grep -E '\.(h|cpp|c)$' | xargs cat | grep -vcE '^[[:space:]]*(//.*)?$'
}
tests=$(code tests fuzz)
all=$(code .)
echo "$tests of $all lines: $(awk "BEGIN { printf \"%.1f\", 100 * $tests / $all }") %"
