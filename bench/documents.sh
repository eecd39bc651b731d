#!/bin/sh
# documents.sh PROGRAM...: milliseconds that `zrasn encode` takes for an access-control list of 44 MB, indented and on one
# line; the least of 11 turns, in which the programs take turns. The last makes the list.
set -eu
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
for program; do :; done
"$program" sample acl_ext --filled >"$directory/one.json"
python3 - "$directory" "$@" <<'END'
import json, subprocess, sys, time
directory, programs = sys.argv[1], sys.argv[2:]
record = json.load(open(directory + '/one.json'))
entries = record['entries']
for name, copies, layout in ('indented', 95000, {'indent': 2}), ('on one line', 180000, {'separators': (',', ':')}):
    record['entries'] = entries * copies
    with open(directory + '/many.json', 'w') as file:
        json.dump(record, file, **layout)
    least = [float('inf')] * len(programs)
    for turn in range(11):
        for i, program in enumerate(programs):
            begin = time.perf_counter()
            subprocess.run([program, 'encode', 'acl_ext', directory + '/many.json'], stdout=subprocess.DEVNULL, check=True)
            least[i] = min(least[i], time.perf_counter() - begin)
    print('%-12s' % name, *('%8.1f' % (1000 * seconds) for seconds in least))
END
