#!/usr/bin/env python3
"""peer.py PROGRAM VECTORS: a peer written from docs/wire-format.md alone reads and writes the golden vectors of all
records, and says of odd and of damaged octets what PROGRAM says of them: the same value or the same status."""
import json
import random
import subprocess
import sys
from pathlib import Path

MEMORY, ENVELOPE, EARLY, CONTENTS, INDEFINITE, CONSTRUCTED, PRIMITIVE, NO_MATCH, TRAILING = 275062885, *(
    275063000 + code for code in (190, 192, 195, 197, 198, 199, 204, 205))
INTEGER, OCTETS, NULL, TEXT, SEQUENCE = 2, 4, 5, 12, 16
TAGS = {"integer": INTEGER, "version": INTEGER, "text": TEXT, "stored_text": OCTETS, "octets": OCTETS,
        "fixed_octets": OCTETS, "nested": SEQUENCE}
program, directory = sys.argv[1:]
records = {record["name"]: record["fields"]
           for record in json.loads(subprocess.check_output([program, "records", "--json"]))}


class Refused(Exception):
    """The octets are no encoding of the record; the argument is the status."""


class NoPartOfTheFormat(Exception):
    """An identifier of which the page does not say what it means."""


def element_of(field):
    """The field as it would be if it held one value of a list."""
    kind = {"list_of_integers": "integer", "list_of_texts": "text"}.get(field["kind"], "nested")
    return {**field, "kind": kind}


class Reader:
    def __init__(self, octets):
        self.octets, self.at, self.overflow = octets, 0, False

    def envelope(self, name, version=2):
        octets = self.octets
        if len(octets) < 5 or octets[1:4] != bytes((version, 0xAC, 0xDC)) or not 0 < octets[0] <= len(octets):
            raise Refused(ENVELOPE)
        self.at = octets[0]
        value = self.record(name, len(octets))
        if self.overflow:
            raise Refused(MEMORY)
        return value

    def next_tag(self, end):
        """The class and tag of the next identifier, -1 behind the last octet."""
        if self.at == end:
            return -1
        if self.octets[self.at] & 0x1F == 0x1F:
            raise NoPartOfTheFormat
        return self.octets[self.at] & 0xDF

    def enter(self, tag, end):
        """Steps over a header; whether the form is constructed, and where the contents end, None if indefinite."""
        found = self.next_tag(end)
        if found != tag:
            raise Refused(EARLY if found == -1 else NO_MATCH)
        constructed = bool(self.octets[self.at] & 0x20)
        if constructed and tag in (INTEGER, NULL) or not constructed and tag == SEQUENCE:
            raise Refused(CONSTRUCTED if constructed else PRIMITIVE)
        self.at += 2
        if self.at > end:
            raise Refused(EARLY)
        length = self.octets[self.at - 1]
        if length == 0x80:
            if tag in (INTEGER, NULL):
                raise Refused(INDEFINITE)
            return constructed, None
        if length > 0x80:
            first, self.at = self.at, self.at + length - 0x80
            if self.at > end:
                raise Refused(EARLY)
            length = int.from_bytes(self.octets[first:self.at][-4:], "big")
        if length > end - self.at:
            raise Refused(EARLY)
        return constructed, self.at + length

    def ended(self, stop, end):
        return self.at == stop if stop is not None else self.octets[self.at:min(end, self.at + 2)] == b"\0\0"

    def leave(self, stop, end):
        if not self.ended(stop, end):
            raise Refused(CONTENTS if stop is None else TRAILING)
        self.at += 2 if stop is None else 0

    def string(self, tag, end):
        constructed, stop = self.enter(tag, end)
        inner, contents = end if stop is None else stop, b""
        while constructed and not self.ended(stop, end):
            contents += self.string(OCTETS, inner)
        if not constructed and stop is not None:
            contents, self.at = self.octets[self.at:stop], stop
        self.leave(stop, end)
        return contents

    def integer(self, end):
        _, stop = self.enter(INTEGER, end)
        octets, self.at = self.octets[self.at:stop], stop
        if len(octets) <= 4:
            return int.from_bytes(octets, "big", signed=True)
        value = 0
        for i in range(len(octets), 0, -4) if octets[0] == 0 else ():
            value |= int.from_bytes(octets[max(i - 4, 0):i], "big")
        return value

    def record(self, name, end):
        _, stop = self.enter(SEQUENCE, end)
        value = {field["name"]: self.field(field, end if stop is None else stop) for field in records[name]}
        self.leave(stop, end)
        return shown(name, value)

    def field(self, field, end):
        kind = field["kind"]
        if kind.startswith("optional_"):
            kind = kind[9:]
            if self.next_tag(end) != TAGS[kind]:
                return "" if kind == "octets" else None
        if kind == "slots" or kind.startswith("list_of_"):
            return self.list(field, end)
        if kind == "nested":
            return self.record(field["record"], end)
        if kind in ("integer", "version"):
            bits = int(field.get("type", "int32_t").strip("uint_")) if kind == "integer" else 32
            value = self.integer(end) % 2**bits
            return value - 2**bits if value >> bits - 1 and not field.get("type", "").startswith("u") else value
        octets = self.string(TAGS[kind], end)
        if kind == "fixed_octets":
            octets = octets[:field["size"]].ljust(field["size"], b"\0")
        if kind in ("octets", "fixed_octets"):
            return octets.hex()
        octets = b"" if kind == "stored_text" and len(octets) < 2 else octets.split(b"\0")[0]
        try:
            return octets.decode()
        except UnicodeDecodeError:
            return {"hex": octets.hex()}

    def list(self, field, end):
        _, stop = self.enter(SEQUENCE, end)
        inner, values = end if stop is None else stop, []
        while not self.ended(stop, end):
            values.append((self.slot if field["kind"] == "slots" else self.field)(element_of(field), inner))
        self.leave(stop, end)
        if field["kind"] == "slots":
            values = values[:field["size"]]
            while values and values[-1] is None:
                values.pop()
        elif field["count_type"] == "uint16_t" and len(values) > 65535:
            self.overflow = True
        return values

    def slot(self, field, end):
        first = self.at
        try:
            if self.next_tag(end) != NULL:
                return self.field(field, end)
            if self.enter(NULL, end)[1] == self.at:
                return None
        except Refused:
            pass
        self.at = first
        raise Refused(NO_MATCH)


def shown(name, value):
    """A record as the program's JSON has it."""
    value.pop("version", None)
    return "%08x-%04x-%04x-%02x%02x-%s" % tuple(value.values()) if name == "uuid_t" else value


def with_header(identifier, contents):
    length = len(contents)
    octets = length.to_bytes((length.bit_length() + 7) // 8, "big")
    return bytes([identifier]) + (bytes([length]) if length < 128 else bytes([128 + len(octets)]) + octets) + contents


def write_record(name, value):
    if name == "uuid_t":
        parts = value.split("-")
        numbers = [int(part, 16) for part in (*parts[:3], parts[3][:2], parts[3][2:])]
        value = dict(zip((field["name"] for field in records[name]), (*numbers, parts[4])))
    return with_header(0x30, b"".join(write_field(field, value.get(field["name"], 1)) for field in records[name]))


def write_field(field, value):
    kind = field["kind"].removeprefix("optional_")
    if kind != field["kind"] and not value:
        return b""
    if kind == "slots" or kind.startswith("list_of_"):
        return with_header(0x30, b"".join(b"\5\0" if each is None else write_field(element_of(field), each)
                                          for each in value))
    if kind == "nested":
        return write_record(field["record"], value)
    if kind in ("integer", "version"):
        value -= 2**32 if value >= 2**31 else 0
        return with_header(2, value.to_bytes(((~value if value < 0 else value).bit_length() + 8) // 8, "big", signed=True))
    if kind in ("octets", "fixed_octets"):
        return with_header(4, bytes.fromhex(value))
    return with_header(12, value.encode()) if kind == "text" else with_header(4, value.encode() + b"\0")


def rewritten(octets, odd):
    """The same values in other forms."""
    out, reader = b"", Reader(octets)
    while reader.at < len(octets):
        identifier, form = octets[reader.at], odd.random()
        _, stop = reader.enter(identifier & 0xDF, len(octets))
        contents, reader.at = octets[reader.at:stop], stop
        if identifier == 0x30:
            contents = rewritten(contents, odd)
        elif identifier in (4, 12) and form < 0.4:
            cut = odd.randrange(len(contents) + 1)
            identifier += 0x20
            contents = rewritten(with_header(4, contents[:cut]) + with_header(4, contents[cut:]), odd)
        elif identifier == 2 and form < 0.3:
            contents = bytes(odd.choice((0, 1, 4, 5))) + contents
        if identifier & 0x20 and odd.random() < 0.3:
            out += bytes([identifier, 0x80]) + contents + b"\0\0"
        elif odd.random() < 0.3:
            count = odd.choice((1, 2, 4, 5, 127))
            out += bytes([identifier, 0x80 + count]) + (len(contents) % 256**count).to_bytes(count, "big") + contents
        else:
            out += with_header(identifier, contents)
    return out


def damaged(octets, odd):
    octets = bytearray(octets)
    for _ in range(odd.randrange(1, 3)):
        at = odd.randrange(len(octets))
        form = bytes.fromhex(odd.choice(("80", "0000", "3080", "2480", "0c80", "0500", "050100", "0200", "22", "10", "84ffffffff",
                                         "0205ff01020304", "0206000000000107", f"{odd.randrange(256):02x}")))
        octets[at:at + odd.choice((0, 1, len(form)))] = odd.choice((form, form, b""))
        octets = octets or bytearray(1)
    return bytes(octets)


def answer(name, envelope):
    try:
        return Reader(envelope).envelope(name)
    except Refused as refused:
        return refused.args[0]
    except NoPartOfTheFormat:
        return None


cases, counts = {name: [] for name in records}, {True: 0, False: 0}
for path in sorted(Path(directory).glob("*.txt")):
    lines = iter([line for line in path.read_text().splitlines() if line and line[0] != "#"])
    for name, text, digits in zip(lines, lines, lines):
        octets = bytes.fromhex(digits)
        assert answer(name, b"\4\2\xac\xdc" + octets) == json.loads(text), f"{name} is read otherwise: {digits}"
        assert write_record(name, json.loads(text)) == octets, f"{name} is written otherwise: {text}"
        odd = random.Random(digits)
        forms = [rewritten(octets, odd) for _ in range(12)]
        cases[name] += forms + [damaged(each, odd) for each in 6 * forms]
        for field in records[name] if max(map(len, cases[name])) < 100000 else ():
            most = 65535 if field.get("count_type") == "uint16_t" else field["size"] if field["kind"] == "slots" else None
            if most and (one := [each for each in json.loads(text)[field["name"]] if each][:1]):
                cases[name] += [write_record(name, {**json.loads(text), field["name"]: (most + 1) * one})]
for name, octets in cases.items():
    assert octets, f"{name} has no vector"
    lines = "".join("0402acdc" + each.hex() + "\n" for each in octets)
    run = subprocess.run([program, "decode", name, "--lines", "--show-secrets", "--from", "hex"], input=lines, capture_output=True, text=True)
    for each, line in zip(octets, run.stdout.splitlines(), strict=True):
        theirs, ours = json.loads(line), answer(name, b"\4\2\xac\xdc" + each)
        if isinstance(theirs, dict) and "error" in theirs:
            theirs = theirs["error"]["status"]
        assert ours is None or ours == theirs, f"{name}: the page says {ours}, the program {theirs}: {each.hex()[:400]}"
        counts[isinstance(ours, int)] += ours is not None
assert min(counts.values()) > 4000, counts
