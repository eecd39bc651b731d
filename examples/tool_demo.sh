#!/bin/sh
# tool_demo.sh PROGRAM JSON: an access-control list goes from JSON into its encoding and back; then one octet is changed
# and the decode says where. Ends with a status only when something else happens than should.
set -eu
program=$(realpath "$1")
json=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cp "$json" acl.json

run() {
    echo "\$ zrasn $*"
    "$program" "$@"
}

run encode acl_ext_s_t acl.json -o acl.ber
echo
run dump --record acl_ext_s_t acl.ber
echo
run decode acl_ext_s_t acl.ber
echo
# The INTEGER of the second permission of the first entry becomes a BOOLEAN.
"$program" encode acl_ext_s_t acl.json --hex | sed 's/020101020102/020101010102/' > broken.hex
run decode acl_ext_s_t broken.hex 2>&1 && exit 1
[ $? -eq 1 ]
