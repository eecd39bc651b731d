#!/bin/sh
# parsers.sh PROGRAM: how fast Debian's JSON parsers go through a document of some 40 MB of access-control lists
# (parsers.cpp). It needs nlohmann-json3-dev, rapidjson-dev and libsimdjson-dev.
set -eu
program=$1
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
"$program" sample acl_ext --filled >"$directory/acl.json"
times=$((40000000 / $(wc -c <"$directory/acl.json") + 1))
awk -v times="$times" '{ text = text $0 "\n" } END { printf "["; for (i = 0; i < times; i++) printf "%s%s", i ? "," : "", text; print "]" }' \
    "$directory/acl.json" >"$directory/many.json"
${CXX:-g++} -std=c++17 -O2 "$(dirname "$0")/parsers.cpp" -lsimdjson -o "$directory/parsers"
"$directory/parsers" "$directory/many.json"
