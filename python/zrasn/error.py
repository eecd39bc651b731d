"""The exception that octets and values that are refused raise."""
from typing import Optional


class Error(ValueError):
    """Octets, or a value, that are no encoding or no value of the record.

    message: such as "found an INTEGER (02), expected a UTF8String (0c)"; never the value of a secret
    status:  the library's number, and its name; 1 for a value
    reason:  a key that never changes, such as "no_match"
    offset:  of what was refused, in octets; None where a value was refused
    path:    of the member, such as "attrs[3].name"; empty for the record itself
    missing: the octets end early: at least so many more are needed; else 0
    """

    __module__ = "zrasn"  # its name for callers

    def __init__(self, message: str, status: int, name: str, reason: str, offset: Optional[int] = None,
                 path: str = "", missing: int = 0) -> None:
        super().__init__(message, status, name, reason, offset, path, missing)
        self.message, self.status, self.name, self.reason = message, status, name, reason
        self.offset, self.path, self.missing = offset, path, missing

    def __str__(self) -> str:
        place = [f"octet {self.offset}"] if self.offset is not None else []
        if self.path:
            place.append(self.path)
        return f"{self.reason}{' at ' if place else ''}{', '.join(place)}: {self.message}"
