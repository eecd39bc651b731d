#!/usr/bin/env python3
"""vectors.py ROOT MADE PROGRAM: the conformance vectors are complete, have the form of their schema, agree with the golden
vectors, which the library took no part in, and answer to each rule what stands here."""
import json
import subprocess
import sys
from pathlib import Path

root, made, program = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
# What plain and strict answer to the octets that a rule makes, whatever the record.
EXPECTED = {
    "longer_length": ("ok", "not_canonical"), "indefinite_length": ("ok", "not_canonical"),
    "no_end_of_contents": ("no_end_of_contents",) * 2, "octet_behind": ("ok", "trailing_data"),
    "longer_header": ("ok", "bad_envelope"), "longer_integer": ("ok", "not_canonical"),
    "integer_of_33_bits": ("ok", "not_canonical"), "segments": ("ok", "not_canonical"),
    "text_with_zero_octet": ("ok", "not_canonical"), "text_not_utf8": ("ok", "not_canonical"),
    "truncated": ("truncated",) * 2, "header_alone": ("truncated",) * 2, "no_header": ("bad_envelope",) * 2,
    "another_version": ("bad_envelope",) * 2, "no_sequence": ("no_match",) * 2,
    "another_first_member": ("no_match",) * 2, "one_member_more": ("trailing_data",) * 2,
    "one_member_less": ("data_ends_early",) * 2, "member_longer_than_record": ("data_ends_early",) * 2,
}
schema = json.loads((root / "tools/vectors/schema.json").read_text())
try:
    from jsonschema import Draft202012Validator
    Draft202012Validator.check_schema(schema)
    validate = Draft202012Validator(schema).validate
except ImportError:  # Debian's python3-jsonschema
    validate = lambda file: None  # noqa: E731

files = {path.stem: json.loads(path.read_text()) for path in made.glob("*.json")}
names = {record["name"] for record in json.loads(subprocess.run(
    [program, "records", "--json"], check=True, capture_output=True, text=True).stdout)}
assert set(files) == names and len(names) >= 65, set(files) ^ names
golden, seen = {}, set()
for path in (root / "tests/vectors").glob("*.txt"):
    lines = [line for line in path.read_text().splitlines() if line and not line.startswith("#")]
    for record, value, octets in zip(lines[::3], lines[1::3], lines[2::3], strict=True):
        golden[record, "0402acdc" + octets] = json.loads(value)
for record, file in files.items():
    validate(file)
    assert file["record"] == record
    vectors = {vector["name"]: vector for vector in file["vectors"]}
    assert len(vectors) == len(file["vectors"]) >= 15, record
    for name, vector in vectors.items():
        plain, strict, where = vector["plain"], vector["strict"], (record, name)
        expected = EXPECTED.get(name, ("ok", "ok"))
        if name == "one_member_less" and record in ("cert_request_in", "yvprincipal_s_t"):  # the last one is optional
            expected = ("ok", "ok")
        assert (plain["reason"], strict["reason"]) == expected, (where, plain, strict)
        assert (vector.get("deviations") == []) == strict["accepted"], where
        if name not in EXPECTED:
            value = golden[record, vector["octets"]]
            assert value == vector["value"] and plain["consumed"] == len(vector["octets"]) // 2, where
            seen.add((record, vector["octets"]))
assert seen == set(golden), set(golden) - seen
