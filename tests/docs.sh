#!/bin/sh
# docs.sh ROOT: what the pages list is complete: every reason of a report stands in docs/api.md, every key of a deviation in
# docs/tool.md, every preset in the README.
set -u
cd "$1" || exit 1

result=0
fail() {
    echo "$1" >&2
    result=1
}

reasons=$(sed -nE 's/.*(return|\?) "([a-z_]+)".*/\2/p' src/asn1/record/decoding.cpp)
[ "$(echo "$reasons" | wc -l)" -ge 8 ] || fail "no reasons found"
for reason in $reasons; do
    grep -qE "^\|.*\`$reason\`.*\|.*\|" docs/api.md || fail "docs/api.md does not list the reason $reason"
done

keys=$(grep -ohE '"[a-z0-9]+(_[a-z0-9]+)+"' src/json/ber/deviations.cpp tools/zrasn/verbs/roundtrip.cpp | tr -d '"')
[ "$(echo "$keys" | wc -l)" -ge 18 ] || fail "no keys of deviations found"
for key in $keys; do
    grep -qF "\`$key\`" docs/tool.md || fail "docs/tool.md does not list the key $key"
done

presets=$(sed -nE 's/^ +\{ "name": "([a-z0-9-]+)", "configurePreset".*/\1/p' CMakePresets.json)
[ "$(echo "$presets" | wc -l)" -ge 9 ] || fail "no presets found"
for preset in $presets; do
    awk '/cmake --list-presets/, /each lies in/' README.md | grep -qF "\`$preset\`" || fail "the README does not list $preset"
done

exit $result
