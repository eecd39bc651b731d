"""The package zrasn: records, refusals, secrets, streams."""
import ast
import functools
import io
import json
import pickle
import random
import struct
import sys
import threading
from pathlib import Path

import pytest
import zrasn
import zrasn._zrasn
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

FIELDS = {record["name"]: record["fields"] for record in zrasn.describe()}
TEXTS = st.text(st.characters(blacklist_categories=["Cs"], blacklist_characters="\0"), max_size=20)
HEX = st.binary(max_size=20).map(bytes.hex)
OTHER_TEXTS = st.binary(min_size=1, max_size=9).map(lambda octets: {"hex": octets.replace(b"\0", b"\xff").hex()})


@functools.lru_cache(None)
def value(record, depth=2):
    """What the record's dict may be; a record that contains itself has so many levels."""
    if record == "uuid_t":
        return st.uuids().map(str)
    return st.fixed_dictionaries({}, optional={
        field["name"]: member(field, record, depth) for field in FIELDS[record] if field["kind"] != "version"})


def member(field, record, depth):
    kind = field["kind"]
    if "record" in field:
        inside = field["record"] == record
        if inside and depth == 0:
            return st.just([])
        element = value(field["record"], depth - inside)
    elif "type" in field:
        bits = int("".join(filter(str.isdigit, field["type"])))
        least = 0 if field["type"].startswith("u") else -1 << bits - 1
        element = st.integers(least, least + (1 << bits) - 1)
    else:
        octets = st.binary(min_size=field.get("size", 0), max_size=field.get("size", 20)).map(bytes.hex)
        element = octets if "octets" in kind else (TEXTS | OTHER_TEXTS).filter(lambda text: text != "***")
    if kind.startswith("list"):
        return st.lists(element, max_size=3)
    if kind == "slots":
        return st.lists(element | st.none(), max_size=field["size"])
    return element | st.none() if kind.startswith("optional") else element


def test_every_record_goes_round_as_its_json_does():
    @settings(max_examples=12, deadline=None, database=None, suppress_health_check=list(HealthCheck))
    @given(st.data())
    def goes_round(record, data):
        given_value = data.draw(value(record))
        octets = zrasn.encode(record, given_value)
        assert octets == zrasn.from_json(record, json.dumps(given_value))
        plain = "'hex'" not in repr(given_value)  # a strict decode takes no other texts
        for options in ({}, {"show_secrets": True}, {"strict": plain}):
            assert zrasn.decode(record, octets, **options) == json.loads(zrasn.to_json(record, octets, **options))
        decoded = zrasn.decode(record, octets, show_secrets=True)
        assert zrasn.encode(record, decoded) == octets
        assert zrasn.decode(record, octets[4:], show_secrets=True, bare=True) == decoded
        for name in given_value if isinstance(given_value, dict) else ():
            if isinstance(given_value[name], (int, str)) and given_value[name] != "":
                assert decoded[name] == given_value[name]

    assert len(zrasn.records()) >= 65 and set(zrasn.records()) == set(FIELDS)
    for record in zrasn.records():
        goes_round(record)


def outcome(call):
    try:
        return call()
    except zrasn.Error as error:
        return error.args


def test_damaged_octets_are_what_their_json_is():
    draw = random.Random(1)
    for record in zrasn.records():
        whole = zrasn.encode(record, zrasn.sample(record, seed=2, filled=True))
        for _ in range(60):
            octets = bytearray(whole)
            for _ in range(draw.randint(1, 4)):
                octets[draw.randrange(4, len(octets))] = draw.choice([0, 1, 0x30, 0x80, 0xFF, draw.randrange(256)])
            for options in ({}, {"strict": True}, {"show_secrets": True, "most_elements": 3}):
                text = outcome(lambda: zrasn.to_json(record, octets, **options))
                decoded = outcome(lambda: zrasn.decode(record, octets, **options))
                assert decoded == (json.loads(text) if isinstance(text, str) else text)


def deep(levels):
    whole = {}
    for _ in range(levels):
        whole = {"elements": [whole]}
    return whole


def endless():
    whole = {}
    whole["elements"] = [{}, whole]
    return {"elements": [whole]}


@pytest.mark.parametrize("record, wrong, path, message", [
    ("sec_id", [], "", "found a list, expected an object (sec_id_t)"),
    ("sec_id", {"nam": ""}, "", 'found a key "nam", expected one of sec_id_t; did you mean "name"?'),
    ("sec_id", {1: ""}, "", "found a key that is no text, expected the name of a member of sec_id_t"),
    ("sec_id", {"uuid": "6ba7"}, "uuid", 'found "6ba7", expected a UUID such as'),
    ("sec_id", {"name": None}, "name", "found None, expected a text"),
    ("sec_id", {"name": "a\0b"}, "name", "found a zero character"),
    ("sec_id", {"name": "\ud800"}, "name", "found half of a character"),
    ("sec_id", {"name": b"a\0"}, "name", "found a zero octet"),
    ("sec_id", {"name": {"hex": "6"}}, "name", 'found "6", expected octets'),
    ("sec_id", {"name": {"hex": "61", "b": 1}}, "name", "found a dict, expected a text"),
    ("sec_id", {"name": {1, 2}}, "name", 'found a value of the type "set", expected a text'),
    ("attrlist", {"attrs": {}}, "attrs", "found a dict, expected an array"),
    ("attrlist", {"attrs": [{}, None]}, "attrs[1]", "found None, expected an object (attr_s_t)"),
    ("attrlist", {"attrs": [{"values": ({}, {"type": 1.0})}]}, "attrs[0].values[1].type",
     "found 1.0, expected a whole number"),
    ("attrlist", {"attrs": [{"values": [{"type": True}]}]}, "attrs[0].values[0].type", "found True"),
    ("attrlist", {"attrs": [{"values": [{"type": 1 << 80}]}]}, "attrs[0].values[0].type", "found a number of more"),
    ("attrlist", {"attrs": [{"values": [{"data": "zz"}]}]}, "attrs[0].values[0].data", 'found "zz", expected octets'),
    ("attrlist", {"attrs": [{"value_count": 1}]}, "attrs[0]", 'found a key "value_count", expected none'),
    ("yvaction_group", {"actions": [None] * 33}, "actions[32]", "found one element more, expected at most 32"),
    ("ejauditevent", endless(), "elements[0].elements[1]", "found a dict that contains itself"),
    ("azn_util_password_in", {"str_a": "***"}, "str_a", 'found "***", which stands for a secret'),
    ("azn_util_password_in", {"str_a": 4711}, "str_a", "found something else, expected a text"),
    ("azn_util_password_in", {"str_a": {"hex": "471"}}, "str_a", "found something else, expected octets"),
])
def test_values_that_are_refused(record, wrong, path, message):
    with pytest.raises(zrasn.Error) as caught:
        zrasn.encode(record, wrong)
    error = caught.value
    assert (error.path, error.status, error.offset) == (path, 1, None)
    assert error.message.startswith(message) and "471" not in str(error)
    assert error.reason == ("hidden_secret" if "stands for" in message else "bad_json")


OCTETS = zrasn.encode("sec_id", {"uuid": "6ba7b810-9dad-11d1-80b4-00c04fd430c8", "name": "ada"})
WRONG = OCTETS[:39] + b"\x02" + OCTETS[40:]


@pytest.mark.parametrize("octets, options, reason, offset, path", [
    (b"", {}, "truncated", 0, ""),
    (b"0123456789", {}, "bad_envelope", 0, ""),
    (WRONG, {}, "no_match", 39, "name"),
    (WRONG[4:], {"bare": True}, "no_match", 35, "name"),
    (OCTETS, {"version": 0}, "bad_envelope", 1, ""),
    (OCTETS + b"\0", {"strict": True}, None, len(OCTETS), ""),
    (OCTETS, {"most_octets": 20}, "limit_octets", None, ""),
    (OCTETS, {"most_depth": 1}, "limit_depth", None, None),
    (bytearray(OCTETS[:4] + b"\x30\x82\x10\x00" + bytes(4096)), {}, "no_match", 8, "uuid"),
])
def test_octets_that_are_refused(octets, options, reason, offset, path):
    with pytest.raises(zrasn.Error) as caught:
        zrasn.decode("sec_id", octets, **options)
    error = pickle.loads(pickle.dumps(caught.value))
    assert str(error) == str(caught.value) and isinstance(error, ValueError) and error.status > 275000000
    assert error.reason == (reason or error.reason) and error.name.startswith("zr_err")
    assert error.offset == (error.offset if offset is None else offset)
    assert error.path == (error.path if path is None else path)


@pytest.mark.parametrize("call, error", [
    (lambda: zrasn.decode("sec_idd", OCTETS), LookupError), (lambda: zrasn.decode(1, OCTETS), TypeError),
    (lambda: zrasn.decode("sec_id"), TypeError), (lambda: zrasn.decode("sec_id", "text"), TypeError),
    (lambda: zrasn.decode("sec_id", OCTETS, most_octet=1), TypeError),
    (lambda: zrasn.decode("sec_id", OCTETS, most_octets=-1), OverflowError),
    (lambda: zrasn.encode("sec_id", {}, strict=True), TypeError),
])
def test_calls_that_are_wrong(call, error):
    with pytest.raises(error):
        call()


def test_forms_of_octets_and_versions():
    for octets in (OCTETS, bytearray(OCTETS), memoryview(OCTETS)):
        assert zrasn.decode("asn_sec_id_t", octets)["name"] == "ada"
    for version in (0, 7, 256 + 9):
        octets = zrasn.encode("sec_id_t", {"name": b"ada"}, version=version)
        assert octets[1] == version % 256 and zrasn.decode("sec_id", octets, version=version)["name"] == "ada"
    assert zrasn.identify(OCTETS)["fitting"] == ["sec_id_t"]
    assert zrasn.check("sec_id", OCTETS)["count"] == 0 and zrasn.walk(OCTETS, "sec_id")["problems"] == 0
    assert "DEFINITIONS" in zrasn.schema("sec_id") and "$schema" in zrasn.json_schema("sec_id")
    long = zrasn.encode("sec_id", {"name": "ä" * 100000})
    assert zrasn.decode("sec_id", bytearray(long))["name"] == "ä" * 100000


def test_any_depth():
    whole = deep(20000)
    octets = zrasn.encode("ejauditevent", whole)
    assert zrasn.encode("ejauditevent", zrasn.decode("ejauditevent", octets)) == octets


def test_secrets_are_not_shown():
    for record in zrasn.records():
        members = [f["name"] for f in FIELDS[record] if f.get("secret")]
        for secret in ("tresor", {"hex": "ff7472"}):
            if "octets" in str([f["kind"] for f in FIELDS[record] if f.get("secret")]):
                secret = "7472"
            octets = zrasn.encode(record, {name: secret for name in members}) if members else None
            if octets is None:
                continue
            hidden, shown = zrasn.decode(record, octets), zrasn.decode(record, octets, show_secrets=True)
            assert [hidden[name] for name in members] == ["***"] * len(members)
            assert [shown[name] for name in members] == [secret] * len(members)
            assert "tresor" not in repr(shown) and "7472" not in repr(shown)
            assert pickle.loads(pickle.dumps(shown)) == shown and json.loads(json.dumps(shown)) == shown
            with pytest.raises(zrasn.Error, match="stands for a secret"):
                zrasn.encode(record, hidden)


ENVELOPES = [zrasn.encode("sec_id", {"name": "a" * (i * 97 % 400)}) for i in range(300)]


class Slow(io.BytesIO):
    def read(self, size=-1):
        return super().read(min(size, 7))


@pytest.mark.parametrize("form", ["envelopes", ">H", "<H", ">I", "<I"])
def test_streams(form, tmp_path):
    whole = b"".join((b"" if form == "envelopes" else struct.pack(form, len(one))) + one for one in ENVELOPES)
    (tmp_path / "file").write_bytes(whole)
    for source in (whole, tmp_path / "file", io.BytesIO(whole)):
        assert list(zrasn.stream(source)) == ENVELOPES
    assert list(zrasn.stream(Slow(whole), form)) == ENVELOPES
    assert [one["name"] for one in zrasn.decode_stream("sec_id", whole)] == ["a" * (i * 97 % 400) for i in range(300)]
    assert list(zrasn.stream(b"", form)) == []
    for wrong, offset in ((whole[:-1], len(whole) - len(ENVELOPES[-1])), (whole + b"\0\xff\xff\xff\xff", len(whole))):
        with pytest.raises(zrasn.Error) as caught:
            list(zrasn.stream(wrong, form))
        assert caught.value.offset in (offset, offset - struct.calcsize(form) if form != "envelopes" else offset)
    with pytest.raises(zrasn.Error, match="limit_octets"):
        list(zrasn.stream(whole, most_octets=300))


def test_threads_and_references():
    value = zrasn.sample("acl_ext", filled=True)
    octets = zrasn.encode("acl_ext", value)
    wrong = []

    def work():
        for _ in range(200):
            if zrasn.decode("acl_ext", octets) != value or zrasn.encode("acl_ext", value) != octets:
                wrong.append(1)

    threads = [threading.Thread(target=work) for _ in range(4)]
    for each in threads:
        each.start()
    for each in threads:
        each.join()
    counts = [sys.getrefcount(None), sys.getrefcount(value), sys.getrefcount(octets)]
    work()
    for _ in range(200):
        with pytest.raises(zrasn.Error):
            zrasn.encode("acl_ext", {"name": 1})
    after = [sys.getrefcount(None), sys.getrefcount(value), sys.getrefcount(octets)]
    assert not wrong and all(abs(a - b) < 100 for a, b in zip(counts, after))


def test_stubs_name_what_there_is():
    stub = ast.parse((Path(zrasn.__file__).parent / "_zrasn.pyi").read_text())
    typed = {one.name for one in stub.body if isinstance(one, ast.FunctionDef)}
    assert typed == {name for name in dir(zrasn._zrasn) if not name.startswith("__")}
    for name in typed:
        assert getattr(zrasn._zrasn, name).__doc__
