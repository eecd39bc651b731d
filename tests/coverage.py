#!/usr/bin/env python3
"""coverage.py BUILD: of what the programs of BUILD counted (-fprofile-instr-generate -fcoverage-mapping), the lines and
conditions of src/ and base_idls/ that were reached, by folder. What the instances of a template saw is added up.

Each condition in src/asn1/codec is to be seen both ways. Those that are not stand in conditions.txt, each with its reason;
one that is missing there, and an entry that is not needed, fail.
"""
import collections
import json
import os
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
JUDGED = 'src/asn1/codec/'


def tool(name):
    """Debian's clang 14 has its tools under their version."""
    return name + '-14'


def export(build):
    """What llvm-cov tells of the libraries and the test programs."""
    profile = build / 'coverage.profdata'
    subprocess.run([tool('llvm-profdata'), 'merge', '-o', profile, *build.glob('profiles/*.profraw')], check=True)
    objects = [build / name for name in ('src/libzrasn.so', 'src/zrz/libzrz.so', 'src/json/libzrasn_json.so',
                                         'tests/zrasn_tests', 'tests/json/zrasn_json_tests', 'fuzz/records_fuzz',
                                         'tools/zrasn/zrasn')]
    command = [tool('llvm-cov'), 'export', '--format=text', f'--instr-profile={profile}']
    for each in objects:
        command += ['-object', each]
    made = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
    return json.loads(made.stdout)['data'][0]


def conditions(functions):
    """(file, line, column, line and column of the end) -> how often it was true, how often false."""
    seen = collections.defaultdict(lambda: [0, 0])
    for function in functions:
        for *place, true, false, file, _, _ in function.get('branches', []):
            name = os.path.relpath(function['filenames'][file], ROOT)
            if name.startswith(('src/', 'base_idls/')):
                counts = seen[(name, *place)]
                counts[0] += true
                counts[1] += false
    return seen


def in_words(place, counts):
    """A condition that was not seen both ways, as conditions.txt has it; nothing for the value of a switch, of which each
    case is a condition."""
    name, line, column, last, end = place
    text = (ROOT / name).read_text().splitlines()[line - 1]
    if text.strip().startswith('switch'):
        return None
    text = text[column - 1:end - 1] if line == last else text[column - 1:]
    way = 'never reached' if counts == [0, 0] else 'never true' if counts[0] == 0 else 'never false'
    return f'{name}: {way}: {text}'


def read_reasons():
    reasons = {}
    for line in (HERE / 'conditions.txt').read_text().splitlines():
        if line.startswith('    '):
            reasons[entry] = line.strip()
        elif line and not line.startswith('#'):
            entry = line
    return reasons


def main():
    build = Path(sys.argv[1])
    data = export(build)
    seen = conditions(data['functions'])
    table = collections.defaultdict(lambda: [0, 0, 0, 0])
    for file in data['files']:
        name = os.path.relpath(file['filename'], ROOT)
        if name.startswith(('src/', 'base_idls/')):
            lines = file['summary']['lines']
            for folder in (os.path.dirname(name), 'all'):
                table[folder][0] += lines['covered']
                table[folder][1] += lines['count']
    for place, counts in seen.items():
        for folder in (os.path.dirname(place[0]), 'all'):
            table[folder][2] += bool(counts[0] and counts[1])
            table[folder][3] += 1
    print(f'{"":24}{"lines":>16}{"conditions seen both ways":>34}')
    for folder, (reached, lines, both, of) in sorted(table.items()):
        print(f'{folder:24}{reached:>8} of {lines:>5}{100 * reached / max(lines, 1):6.1f} %'
              f'{both:>14} of {of:>5}{100 * both / max(of, 1):6.1f} %')

    reasons = read_reasons()
    missing = {}
    for place, counts in sorted(seen.items()):
        if place[0].startswith(JUDGED) and not all(counts):
            words = in_words(place, counts)
            if words:
                missing[words] = place
    for words, place in missing.items():
        if words not in reasons:
            print(f'{place[0]}:{place[1]}: not in conditions.txt: {words}')
    for words in reasons.keys() - missing.keys():
        print(f'conditions.txt: seen both ways: {words}')
    sys.exit(missing.keys() != reasons.keys())


main()
