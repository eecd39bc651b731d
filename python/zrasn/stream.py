"""Files and pipes with one envelope behind the other."""
import io
import os
from typing import Any, BinaryIO, Iterator, Optional, Tuple, Union

from zrasn._zrasn import cut, decode
from zrasn.error import Error

Source = Union[bytes, bytearray, memoryview, str, "os.PathLike[str]", BinaryIO]

# What stands before each envelope: the length as struct.unpack would read it, or nothing. Octets and their order.
FORMS = {"envelopes": (0, False), ">H": (2, False), "<H": (2, True), ">I": (4, False), "<I": (4, True)}

CHUNK = 1 << 20  # octets that are read at a time


def refusal(message: str, offset: int, reason: str = "bad_envelope", missing: int = 0) -> Error:
    return Error(message, 275063190, "zr_err_bad_envelope", reason, offset, "", missing)


def recognise(front: bytes) -> str:
    """The form of a row of envelopes, by its first octets; of several that fit, the one of which most envelopes fit."""
    likely = [form for form, (prefix, _) in FORMS.items() if front[prefix + 2:prefix + 4] == b"\xac\xdc"]
    counts = {form: len(cut(front, *FORMS[form], 64)[0]) for form in likely}
    if not likely:
        raise refusal("found no envelope at the front, nor behind a length of 2 or 4 octets", 0)
    return max(likely, key=lambda form: counts[form])


def pieces(source: BinaryIO, form: Optional[str] = None, most_octets: int = 0) -> Iterator[Tuple[int, bytes]]:
    """Each envelope with its offset. As much is held in memory as the longest one has, or a chunk."""
    held, before = b"", 0  # what is read and not given; octets before it
    while True:
        # A length may lie: what is read doubles, however many octets it wants.
        more = source.read(max(CHUNK, len(held)))
        held += more
        if form is None and held:
            form = recognise(held)
        found, used, missing = cut(held, *FORMS[form], len(held)) if held else ([], 0, 0)
        for at, size in found:
            if most_octets and size > most_octets:
                raise refusal(f"found {size} octets, expected at most {most_octets}", before + at, "limit_octets")
            yield before + at, held[at:at + size]
        held, before = held[used:], before + used
        if missing < 0:
            raise refusal("found no envelope", before)
        if most_octets and len(held) + missing > most_octets + 4:
            raise refusal(f"found an envelope of more than {most_octets} octets", before, "limit_octets")
        if not more:
            if held:
                raise refusal(f"found the end of the data, expected {missing} more octets or more", before, "truncated",
                              missing)
            return


def opened(source: Source) -> BinaryIO:
    if isinstance(source, (bytes, bytearray, memoryview)):
        return io.BytesIO(source)
    if isinstance(source, (str, os.PathLike)):
        return open(source, "rb")
    return source


def stream(source: Source, form: Optional[str] = None, *, most_octets: int = 0) -> Iterator[bytes]:
    """The envelopes of a file (its path, or open for reading octets) or of octets, one after the other.

    form is "envelopes", or the length before each as the module struct writes it: ">H", "<H", ">I" or "<I"; None
    recognises it. An envelope of more than most_octets is refused; 0 is no limit. Raises Error, at the latest where the
    source ends within an envelope.
    """
    file = opened(source)
    try:
        for _, piece in pieces(file, form, most_octets):
            yield piece
    finally:
        if file is not source:
            file.close()


def decode_stream(record: str, source: Source, form: Optional[str] = None, **options: Any) -> Iterator[Any]:
    """The records of a file or of octets: what decode, with its options, gives of each envelope."""
    for piece in stream(source, form, most_octets=options.get("most_octets", 0)):
        yield decode(record, piece, **options)
