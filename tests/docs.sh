#!/bin/sh
# docs.sh ROOT: every preset stands in the README.
set -u
cd "$1" || exit 1

result=0
fail() {
    echo "$1" >&2
    result=1
}

presets=$(sed -nE 's/^ +\{ "name": "([a-z0-9-]+)", "configurePreset".*/\1/p' CMakePresets.json)
[ "$(echo "$presets" | wc -l)" -ge 9 ] || fail "no presets found"
for preset in $presets; do
    awk '/cmake --list-presets/, /each lies in/' README.md | grep -qF "\`$preset\`" || fail "the README does not list $preset"
done

exit $result
