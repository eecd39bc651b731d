#!/bin/bash
# pages.sh PROGRAM DIRECTORY ROOT: what docs/tool.md shows is what the program prints. Each block that begins with "$ "
# is run, with the files that the page speaks of; DIRECTORY is made anew.
set -u
mkdir -p "$2/bin" && ln -sf "$(realpath "$1")" "$2/bin/zrasn" || exit 1
export PATH="$(realpath "$2")/bin:$PATH"
root=$(realpath "$3")
cd "$2" || exit 1
cp "$root/examples/acl.json" .
zrasn encode acl_ext_s_t acl.json -o acl.ber
zrasn encode acl_ext_s_t acl.json --hex | sed 's/020101020102/020101010102/' > broken.hex
sed 's/"perms": \[1\]/"perm": [1]/' acl.json > typo.json

awk '/^```/ { inside = !inside; if (inside) shown = 0; next } inside && /^\$ / { shown = 1 } inside && shown' \
    "$root/docs/tool.md" > expected
grep '^\$ ' expected | while read -r _ command; do
    echo "\$ $command"
    eval "$command" 2>&1
done > printed
[ "$(grep -c '^\$ ' expected)" -ge 5 ] || { echo 'docs/tool.md shows no commands' >&2; exit 1; }
diff -u expected printed
