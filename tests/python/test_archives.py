"""zrasn.archive: blocks, and a cluster of two workers beside one process. COUNT events (20000)."""
import json
import os
import struct
from collections import Counter

import pytest
import zrasn
from zrasn import archive

COUNT = int(os.environ.get("COUNT", "20000"))
KINDS = [zrasn.sample("ejauditevent", seed=seed, filled=seed % 4 == 0) for seed in range(64)]
RECORD = "ejauditevent"


def write(path, form, count):
    """An archive of audit events, each with a number of its own."""
    with open(path, "wb") as file:
        for i in range(count):
            event = dict(KINDS[i % 64], int_a=i)
            octets = zrasn.encode(RECORD, event)
            if form in ("hex", "json"):
                file.write((octets.hex() if form == "hex" else json.dumps(event)).encode() + b"\n")
            else:
                file.write((b"" if form == "envelopes" else struct.pack(form, len(octets))) + octets)
    return path


def kind(event):
    return event["int_a"] % 64, len(event["elements"])


@pytest.mark.parametrize("form", ["envelopes", ">H", "<H", ">I", "<I", "hex", "json"])
def test_blocks(form, tmp_path):
    path = write(tmp_path / "archive", form, 2000)
    for size, exact in ((1, False), (3000, False), (3000, True), (100000, False), (1 << 30, False)):
        if size == 1:
            write(path, form, 300)
        blocks = archive.index(path, size=size, exact=exact)
        numbers = [event["int_a"] for block in blocks for event in archive.records(block, RECORD)]
        assert numbers == list(range(300 if size == 1 else 2000)) and {block.form for block in blocks} == {form}
        assert sum(block.size for block in blocks) == path.stat().st_size
        assert len(blocks) == len(numbers) if size == 1 else len(blocks) >= path.stat().st_size // (size + 5000)
        if size == 1:
            write(path, form, 2000)
    whole = path.read_bytes()
    path.write_bytes(whole[:-1] if form not in ("hex", "json") else whole + b"0g\n")
    with pytest.raises(ValueError):
        [list(archive.records(block, RECORD)) for block in archive.index(path, size=3000)]
    assert archive.index(os.devnull) == []


def test_octets_within_a_record_are_no_border(tmp_path):
    inner = zrasn.encode("sec_id", {}) * 200
    path = tmp_path / "archive"
    path.write_bytes(zrasn.encode(RECORD, {"elements": [{"data": inner}]}) * 40)
    with pytest.raises(zrasn.Error, match="exact=True"):
        [list(archive.records(block, RECORD)) for block in archive.index(path, size=5000)]
    blocks = archive.index(path, size=5000, exact=True)
    assert len(blocks) > 20 and sum(len(list(archive.records(block, RECORD))) for block in blocks) == 40


def test_secrets_on_lines(tmp_path):
    path = tmp_path / "archive"
    path.write_text('{"str_a": "tresor"}\n\n{"str_a": "***"}\n')
    block, = archive.index(path)
    assert list(archive.records(block, "azn_util_password_in")) == [{"str_a": "***"}] * 2
    assert next(archive.records(block, "azn_util_password_in", show_secrets=True)) == {"str_a": "tresor"}
    path.write_text('{"error": {"reason": "truncated"}}\n')
    with pytest.raises(zrasn.Error, match="truncated"):
        list(archive.records(archive.index(path)[0], "azn_util_password_in"))


def test_cluster_counts_as_one_process_does(tmp_path):
    distributed = pytest.importorskip("distributed")
    path = write(tmp_path / "archive", "envelopes", COUNT)
    blocks = archive.index(path, size=min(16 << 20, path.stat().st_size // 8))
    one = Counter(kind(event) for block in blocks for event in archive.records(block, RECORD))
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client:
        bag = archive.bag(path, RECORD, size=blocks[0].size)
        two = dict(bag.map(kind).frequencies().compute())
        assert len(client.scheduler_info()["workers"]) == 2 and bag.npartitions >= 8
    assert two == one and sum(one.values()) == COUNT
