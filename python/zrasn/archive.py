"""Archives: files of records that are too many for one process.

    >>> from zrasn import archive
    >>> blocks = archive.index("events.ber")                         # doctest: +SKIP
    >>> sum(1 for block in blocks for _ in archive.records(block, "ejauditevent"))  # doctest: +SKIP
    2000000

index cuts a file into blocks that begin and end with a record; what decodes a block needs nothing of the others. bag hands
the blocks to Dask. The forms are those of zrasn.stream, and "hex" or "json": a record on each line.
"""
import json
import mmap
import os
import re
from dataclasses import dataclass
from typing import Any, Dict, Iterator, List, Optional, Sequence, Tuple, Union

from zrasn._zrasn import cut, decode, describe
from zrasn.stream import FORMS, recognise, refusal

Path = Union[str, "os.PathLike[str]"]

# A row of so many envelopes, or one that ends with the file, is taken for envelopes of the archive's own.
ROW = 16
# How many octets are looked at for it first, and places in them; where more would have to be, the file is walked.
WINDOW, PLACES = 1 << 16, 256


@dataclass(frozen=True)
class Block:
    """A part of an archive that begins and ends with a record."""

    path: str
    form: str
    offset: int  # in the file, in octets
    size: int    # in octets


def form_of(front: bytes) -> str:
    """The form of an archive by its first octets."""
    if re.match(rb"\s*\{", front):
        return "json"
    if re.match(rb"\s*([0-9a-fA-F]{2}\s?){8}", front):
        return "hex"
    return recognise(front)


def index(path: Path, form: Optional[str] = None, size: int = 16 << 20, exact: bool = False) -> List[Block]:
    """Cuts a file into blocks of about so many octets.

    Little is read at each border. In a row of envelopes the next one is looked for there: octets within a record that look
    like many envelopes can be taken for them, and then the block before is refused where it is read. exact goes from
    envelope to envelope instead, through the whole file.
    """
    with open(path, "rb") as file:
        end = file.seek(0, os.SEEK_END)
        if end == 0:
            return []
        with mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as octets, memoryview(octets) as view:
            form = form or form_of(octets[:WINDOW])
            borders = [0]
            while borders[-1] < end:
                borders.append(_border(octets, view, form, borders[-1], min(borders[-1] + size, end), exact))
    return [Block(os.fspath(path), form, a, b - a) for a, b in zip(borders, borders[1:])]


def _border(octets: mmap.mmap, view: memoryview, form: str, before: int, wanted: int, exact: bool) -> int:
    """The first border from `wanted` on that is found, behind the one before."""
    if wanted == len(octets):
        return wanted
    if form not in FORMS:
        return octets.find(b"\n", wanted - 1) + 1 or len(octets)
    found = None if exact else _likely(octets, view, form, wanted)
    return found if found is not None else _walked(view, form, before, wanted)


def _likely(octets: mmap.mmap, view: memoryview, form: str, wanted: int) -> Optional[int]:
    """Where a row of envelopes begins; None where none is near."""
    prefix, little = FORMS[form]
    end = min(wanted + WINDOW, len(octets))
    at = wanted + prefix
    for _ in range(PLACES):
        at = octets.find(b"\xac\xdc\x30", at, end) + 1  # behind the AC
        if at == 0:
            return None
        start = at - 3 - prefix
        with view[start:end] as rest:
            row, used, missing = cut(rest, prefix, little, ROW)
            whole = all(bytes(rest[a + 2:a + 4]) == b"\xac\xdc" for a, _ in row)
        if start >= wanted and whole and row and (len(row) == ROW or start + used == len(octets)):
            return start
    return None


def _walked(view: memoryview, form: str, before: int, wanted: int) -> int:
    """The first border from `wanted` on, by all lengths from the border before."""
    at, window = before, WINDOW
    while at < wanted:
        with view[at:at + window] as rest:
            row, used, missing = cut(rest, *FORMS[form], window)
            short = len(rest) < window
        starts = [at + a - FORMS[form][0] for a, _ in row] + [at + used]
        at = next((start for start in starts if start >= wanted), at + used)
        if missing < 0 or (missing and not row and short):
            return len(view)  # what is wrong there is told where the block is read
        window = max(WINDOW, window * 2 if not row else WINDOW)
    return at


def pieces(block: Block) -> Iterator[Tuple[int, bytes]]:
    """Each record of a block with its offset in the file: its octets, or as JSON the line."""
    with open(block.path, "rb") as file:
        file.seek(block.offset)
        octets = file.read(block.size)
    if block.form in FORMS:
        row, used, missing = cut(octets, *FORMS[block.form], len(octets))
        for at, size in row:
            yield block.offset + at, octets[at:at + size]
        if used != block.size:
            raise refusal("the block does not end with an envelope: the file is damaged, or is to be indexed with "
                          "exact=True", block.offset + used, missing=max(missing, 0))
        return
    at = block.offset
    for line in octets.splitlines(keepends=True):
        if line.strip():
            try:
                yield at, bytes.fromhex(line.decode("ascii")) if block.form == "hex" else line
            except ValueError:
                raise refusal("found a line of other characters than hexadecimal digits", at, "bad_hex") from None
        at += len(line)


def records(block: Block, record: str, **options: Any) -> Iterator[Any]:
    """What decode, with its options, gives of each record of a block; of JSON what the line says, without its secrets."""
    if block.form == "json":
        fields = {one["name"]: one["fields"] for one in describe()}
        for at, line in pieces(block):
            value = json.loads(line)
            if isinstance(value, dict) and set(value) == {"error"}:
                raise refusal(f"found what was refused before: {value['error']}", at, "bad_json")
            yield value if options.get("show_secrets") else _without_secrets(value, _name(record), fields)
        return
    for _, octets in pieces(block):
        yield decode(record, octets, **options)


def _name(record: str) -> str:
    return describe(record)["name"]


def _without_secrets(value: Any, record: str, fields: Dict[str, Any]) -> Any:
    if isinstance(value, list):
        return [_without_secrets(one, record, fields) for one in value]
    if not isinstance(value, dict):
        return value
    of = {field["name"]: field for field in fields[record]}
    return {name: "***" if of.get(name, {}).get("secret")
            else _without_secrets(one, of[name]["record"], fields) if "record" in of.get(name, {}) else one
            for name, one in value.items()}


def _read(blocks: Sequence[Block], record: str, options: Dict[str, Any]) -> List[Any]:
    return [value for block in blocks for value in records(block, record, **options)]


def bag(paths: Union[Path, Sequence[Path]], record: str, form: Optional[str] = None, size: int = 16 << 20,
        exact: bool = False, **options: Any) -> Any:
    """A dask.bag of the records of one or more archives, a partition for each block; needs Dask.

    The files are opened where the blocks are decoded: all workers must have them under the same paths.
    """
    import dask.bag

    names = [paths] if isinstance(paths, (str, os.PathLike)) else list(paths)
    blocks = [block for path in names for block in index(path, form, size, exact)]
    return dask.bag.from_sequence(blocks, partition_size=1).map_partitions(_read, record, options)
