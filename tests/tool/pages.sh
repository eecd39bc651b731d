#!/bin/bash
# pages.sh PROGRAM DIRECTORY ROOT: what README.md and the pages of docs show is what the program prints. Each block that begins
# with "$ " is run, with the files that the pages speak of; DIRECTORY is made anew. And the program's rooms are as their
# page has them: each includes only itself and those above it.
set -u
mkdir -p "$2/bin" && ln -sf "$(realpath "$1")" "$2/bin/zrasn" || exit 1
export PATH="$(realpath "$2")/bin:$PATH"
root=$(realpath "$3")
cd "$2" || exit 1
cp "$root/examples/acl.json" .
zrasn encode acl_ext_s_t acl.json -o acl.ber
zrasn encode acl_ext_s_t acl.json --hex | sed 's/020101020102/020101010102/' > broken.hex
sed 's/"perms": \[1\]/"perm": [1]/' acl.json > typo.json

# rooms DIRECTORY MAY EXPECTED: includes are written from MAY on.
rooms() {
    local above= room include
    for room in $(sed -nE 's/^\| `([a-z]+)\/` \|.*/\1/p' "$1/README.md"); do
        above="$above|$room"
        for include in $(sed -nE "s,^#include \"$2([a-z0-9_]+)/.*,\1,p" "$1/$room"/*.h "$1/$room"/*.cpp); do
            [[ "$above|$3|" == *"|$include|"* ]] || { echo "$room/ includes $include/" >&2; exit 1; }
        done
    done
    [ "$above" = "$4" ] || { echo "the rooms are $above" >&2; exit 1; }
}
rooms "$root/tools/zrasn" '' 'asn1|zrasn|json' '|base|input|verbs|cli'
rooms "$root/src/json" json/ '' '|base|ber|document|describe|c'

awk '/^```/ { inside = !inside; if (inside) shown = 0; next } inside && /^\$ / { shown = 1 } inside && shown' \
    "$root/README.md" "$root/docs/tool.md" "$root"/docs/{wire-format,adopting,cookbook}.md > expected
grep '^\$ ' expected | while read -r _ command; do
    echo "\$ $command"
    eval "$command" 2>&1
done > printed
[ "$(grep -c '^\$ ' expected)" -ge 15 ] || { echo 'the pages show too few commands' >&2; exit 1; }
diff -u expected printed
