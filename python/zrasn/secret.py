"""Secrets that were asked for."""


class Secret(str):
    """The value of a member that is marked secret, where show_secrets is set.

    It is a str in every way but one: repr, and with it the repr of any dict, list or traceback that holds it, shows '***'.
    """

    __slots__ = ()
    __module__ = "zrasn"  # its name for callers

    def __repr__(self) -> str:
        return "'***'"
