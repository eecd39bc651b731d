#!/usr/bin/env python3
"""make_vectors.py [--check]: makes tests/vectors/*.txt and the seeds of records_fuzz; those that a fault gave its name have no number.

Values come from the rules below and the ASN.1 module zrasn.asn1, octets from Erlang's ASN.1 compiler: nothing of the
library takes part. With --check nothing is written: the exit status tells whether the files are what would be made,
77 that the compiler is not installed.
"""
import json
import re
import shutil
import subprocess
import sys
import tempfile
from itertools import cycle
from pathlib import Path

here = Path(__file__).resolve().parent
vectors = here.parent / "vectors"
seeds = here.parent.parent / "fuzz" / "seeds" / "records_fuzz"

RANGES = {"Int32": (-(2**31), 2**31 - 1), "Uint16": (0, 2**16 - 1), "Uint8": (0, 2**8 - 1)}
NUMBERS = [-(2**31), 2**31 - 1, -1, 127, 128, -128, -129, 255, 256, 32767, 32768, -32768, -32769, 65535, 65536,
           8388607, 8388608, -8388608, -8388609, 0, 2**32 - 1]
SHORT_TEXTS = ["", "Grüße", "€ 12,50", "Ж", "日本語", "𐍈", " ", "tab\there", "a"]
LENGTHS = [127, 128, 255, 256]


class Schema:
    """The types of the ASN.1 module by name; a SEQUENCE is a list of (member, type, is_list, is_optional)."""

    def __init__(self, path):
        self.records, self.slots, self.modules = {}, {}, {}
        module = None
        for line in path.read_text().splitlines():
            if found := re.match(r"-- module (\w+)", line):
                module = found[1]
            elif found := re.match(r"([\w-]+) ::= (SEQUENCE|CHOICE) \{", line):
                fields, name = [], found[1]
                if found[2] == "SEQUENCE":
                    self.records[name] = fields
                    self.modules.setdefault(module, []).append(name)
                else:
                    self.slots[name] = fields
            elif found := re.match(r"    ([\w-]+) (SEQUENCE OF )?([\w-]+)( \(SIZE \(6\)\))?( OPTIONAL)?,?$", line):
                fields.append((found[1].replace("-", "_"), found[3], bool(found[2]), bool(found[5])))
        self.slots = {name: fields[1][1] for name, fields in self.slots.items()}


class Values:
    """Makes values of a record: objects with the names of the C members."""

    def __init__(self, schema, kind):
        self.schema, self.kind = schema, kind
        self.count = 0
        self.numbers, self.texts, self.lengths = cycle(NUMBERS), cycle(SHORT_TEXTS), cycle(LENGTHS)
        self.choice = cycle([True, False, False])

    def record(self, name, depth=0):
        return {member: self.value(member, *rest, depth) for member, *rest in self.schema.records[name]
                if rest[0] != "Version"}

    def value(self, member, type_name, is_list, optional, depth):
        if is_list:
            return self.list(member, type_name, depth)
        if optional and (self.kind == "empty" or (self.kind == "edges" and next(self.choice))):
            return "" if type_name == "Octets" else None  # octets are absent when there are none
        return self.item(member, type_name, depth)

    def list(self, member, type_name, depth):
        own = type_name in self.schema.records and any(t == type_name for _, t, _, _ in self.schema.records[type_name])
        if self.kind == "empty" or (own and depth > 4):
            return []
        count = 2 if self.kind == "typical" else 1 if own and depth > 1 else 3 if depth < 2 else depth % 2
        if type_name in self.schema.slots:
            used = [2] if self.kind == "typical" else [0, 5, 31] if depth == 0 else [1]
            return [self.item(member, self.schema.slots[type_name], depth) if i in used else None
                    for i in range(used[-1] + 1)]
        return [self.item(member, type_name, depth) for _ in range(count)]

    def item(self, member, type_name, depth):
        self.count += 1
        if type_name in self.schema.records:
            return self.record(type_name, depth + 1)
        if type_name in RANGES:
            return self.number(member, *RANGES[type_name])
        if type_name in ("Text", "TextOctets"):
            return self.text(member, depth)
        return self.octets(member, depth)

    def number(self, member, low, high):
        if self.kind == "empty":
            return 0
        if self.kind == "typical":
            return self.count
        if low == 0:
            return high if self.count % 2 else (high + 1) // 2
        number = next(self.numbers)
        if member == "time_low":  # the one unsigned member of 32 bits
            return number % 2**32
        return number if number <= high else -1

    def text(self, member, depth):
        if self.kind == "empty":
            return ""
        if self.kind == "typical":
            return f"{member} {self.count}"
        return (member + "-" * 256)[: next(self.lengths)] if depth == 0 and self.count % 2 else next(self.texts)

    def octets(self, member, depth):
        if member == "node":
            return {"empty": "000000000000", "typical": "00163e5e6c00", "edges": "ff80007f01fe"}[self.kind]
        if self.kind == "empty":
            return ""
        count = next(self.lengths) if self.kind == "edges" and depth == 0 else self.count % 5
        return bytes((self.count + 37 * i) % 256 for i in range(count)).hex()


def single_cases():
    """Values that the rules do not make."""
    none = {"attrs": []}
    action = {"int_a": 1, "str_a": "r", "str_b": "read", "str_c": "", "int_b": 0, "int_c": -1, "ext": none}
    uuid = {"time_low": 0, "time_mid": 0, "time_hi_and_version": 0, "clock_seq_hi_and_reserved": 0,
            "clock_seq_low": 0, "node": "000000000000"}
    some = {"id": {"uuid": uuid, "name": "me"}, "ids": []}
    deep = {"name": "level 7", "values": [], "children": []}
    for level in range(6, 0, -1):
        deep = {"name": f"level {level}", "values": ["v"] * (level % 3), "children": [deep]}
    return {
        "Yvprincipal-s-t": [{"int_a": 1, "pa": some, "int_b": 2, "ext": None},
                            {"int_a": 1, "pa": None, "int_b": 2, "ext": none}],
        "Yvaction-group-s-t": [{"name": "in the sixth slot", "actions": [None] * 5 + [action], "ext": none},
                               {"name": "full", "actions": [action] * 32, "ext": none}],
        "Namevalue-s-t": [deep],
        "Acl-permset-s-t": [{"perms": NUMBERS[:-1]}, {"perms": [7] * 43}, {"perms": list(range(128))}],
        "Dbr-get-db-in-s-t": [{"int_a": number} for number in NUMBERS[:-1]],
        "Uuid-t": [dict(uuid, time_low=number) for number in (2**31, 2**31 - 1, 2**32 - 1, 2**32 - 128, 2**32 - 129)],
    }


def erlang(schema, name, value):
    """The value as a term for the compiled module."""
    fields = []
    for member, type_name, is_list, optional in schema.records[name]:
        if type_name == "Version":
            item = "1"
        elif optional and value[member] in (None, ""):
            continue
        elif is_list:
            item = "[" + ",".join(erlang_item(schema, type_name, each) for each in value[member]) + "]"
        else:
            item = erlang_item(schema, type_name, value[member])
        fields.append(f"'{member.replace('_', '-')}' => {item}")
    return "#{" + ", ".join(fields) + "}"


def erlang_item(schema, type_name, value):
    if type_name in schema.slots:
        return "{empty, 'NULL'}" if value is None else "{used, " + erlang(schema, schema.slots[type_name], value) + "}"
    if type_name in schema.records:
        return erlang(schema, type_name, value)
    if type_name in RANGES:
        low, high = RANGES[type_name]
        return str(value if value <= high or low == 0 else value - 2**32)
    octets = bytes.fromhex(value) if type_name == "Octets" else value.encode()
    return "<<" + ",".join(map(str, octets + b"\0" if type_name == "TextOctets" else octets)) + ">>"


def encode(schema, cases):
    with tempfile.TemporaryDirectory() as directory:
        terms = Path(directory) / "terms"
        terms.write_text("".join(f"{{'{name}', {erlang(schema, name, value)}}}.\n" for name, _, value in cases))
        module = shutil.copy(here / "zrasn.asn1", Path(directory) / "Zrasn.asn1")  # named as the compiler wants it
        run = subprocess.run(["escript", here / "encode.escript", module, directory, terms],
                             capture_output=True, text=True)
    if run.returncode != 0:
        sys.exit(run.stdout + run.stderr)
    return run.stdout.split()


def shown(value):
    """The value as the command-line program's JSON has it: with each UUID as its text."""
    if isinstance(value, list):
        return [shown(each) for each in value]
    if not isinstance(value, dict):
        return value
    if "time_low" not in value:
        return {member: shown(each) for member, each in value.items()}
    return "%08x-%04x-%04x-%02x%02x-%s" % tuple(value.values())


def pick(record):
    """The octets by which the fuzz target finds a record: a hash of its name."""
    number = 0x811C9DC5
    for octet in record.encode():
        number = (number ^ octet) * 0x01000193 % 2**32
    return (number >> 16 ^ number & 0xFFFF).to_bytes(2, "big")


def make(schema):
    """The files by path."""
    singles = single_cases()
    cases = []
    for name in schema.records:
        cases += [(name, kind, Values(schema, kind).record(name)) for kind in ("empty", "typical", "edges")]
        cases += [(name, "single", value) for value in singles.get(name, [])]
    files = {}
    for (name, kind, value), octets in zip(cases, encode(schema, cases), strict=True):
        module = next(module for module, names in schema.modules.items() if name in names)
        path = vectors / f"{module}.txt"
        record = name[0].lower() + name[1:].replace("-", "_")
        head = "# Made by tests/schema/make_vectors.py: record, members, octets (README.md).\n"
        files[path] = files.get(path, head.encode()) + "\n".join(
            ["", f"# {kind}", record, json.dumps(shown(value), ensure_ascii=False, separators=(",", ":")), octets, ""]).encode()
        same = sum(1 for made in files if made.name.startswith(record + "."))
        files[seeds / f"{record}.{same}"] = pick(record) + bytes.fromhex(octets)
    return files


def main():
    if not shutil.which("escript"):
        print("Erlang's ASN.1 compiler (packages erlang-base, erlang-asn1) is not installed: nothing is compared")
        sys.exit(77)
    files = make(Schema(here / "zrasn.asn1"))
    made = {path for directory, pattern in ((vectors, "*.txt"), (seeds, "*.*")) for path in directory.glob(pattern)}
    if "--check" in sys.argv[1:]:
        wrong = [path for path, text in files.items() if not path.is_file() or path.read_bytes() != text]
        wrong += made - files.keys()
        sys.exit("not what make_vectors.py makes: " + " ".join(map(str, wrong)) if wrong else 0)
    for path in made - files.keys():
        path.unlink()
    for path, text in files.items():
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)
    print(f"{len(files)} files")


main()
