#!/bin/bash
# run.sh ROOT WORK: follows docs/manual.md word for word in a copy of the sources, but for what needs root: the files that it
# says to save, and the commands, which must print what stands below them.
set -eu
root=$1
work=$2
rm -rf "$work"
mkdir -p "$work/clone" "$work/home"
cd "$root"
cp -r CMakeLists.txt cmake src base_idls zrasn tools "$work/clone"

export HOME=$work/home CXXFLAGS=-O0 CMAKE_BUILD_TYPE=None
unset MAKEFLAGS PKG_CONFIG_PATH LD_LIBRARY_PATH
# A script of the page: what is shown to be printed is printed by `expected` too.
awk -v home="$HOME" '
    /^<!-- file: / { file = home "/first/" $3; next }
    /^```/ { open = !open; if (open && file) print "cat > " file " << \"END OF FILE\""; else if (file) { print "END OF FILE"; file = "" } next }
    open && file { print; next }
    open && /^\$ / { print "echo " quoted($0) " >&3"; print substr($0, 3); next }
    function quoted(text) { gsub("\x27", "\x27\\\x27\x27", text); return "\x27" text "\x27" }' docs/manual.md >"$work/script"
awk '/^<!-- file: / { skip = 1 } /^```/ { open = !open; if (!open) skip = 0; next } open && !skip' docs/manual.md >"$work/expected"
[ "$(grep -c '^\$ ' "$work/expected")" -ge 12 ] || { echo 'the page shows too few commands' >&2; exit 1; }
cd "$work/clone"
bash "$work/script" >"$work/printed" 2>&1 3>&1 || true
diff -u "$work/expected" "$work/printed"
