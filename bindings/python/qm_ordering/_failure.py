"""Failures: those that are raised, and the last one that the library kept to itself."""

import sys
from ctypes import byref
from threading import get_ident, main_thread
from typing import Any, NamedTuple

from . import _library
from ._contracts import contract


class QMFailure(Exception):
    """A failure that the library raises. The README's table, and Failure.h, name the numbers.

    number: what kind of failure it is
    description: what failed, on which file, why, and what to do about it

    A callback may raise one, too: an error record then has its number and description.
    """

    def __init__(self, number: int, description: str) -> None:
        super().__init__(number, description)
        self.number = number
        self.description = description

    def __str__(self) -> str:
        return f"{self.description} (failure {self.number})"


class LastFailure(NamedTuple):
    """What last_failure answers."""

    number: int
    description: str
    operation: str


# What a callback has raised, by thread, until the call of the library that it interrupts has ended.
raised: dict[int, BaseException] = {}


_callbacks_expected = False


def expect_callbacks() -> None:
    """From now on calls of the library may call the host's functions."""
    global _callbacks_expected
    _callbacks_expected = True


def run(function: Any, *arguments: object) -> int:
    """Calls a function of the library that may call the host's.

    The handler of a signal (KeyboardInterrupt) runs on the main thread before the first instruction of the next Python
    function, which is the callback's, where no handler of its own is in force yet. ctypes hands such an exception to
    the unraisable hook, and it is kept from there.
    """
    if not _callbacks_expected or get_ident() != main_thread().ident:
        return function(*arguments)  # type: ignore[no-any-return]
    before = sys.unraisablehook

    def keep(unraisable: Any) -> None:
        callback = getattr(unraisable.object, "__module__", None) == f"{__package__}._callbacks"
        if callback and unraisable.exc_value is not None:
            raised.setdefault(get_ident(), unraisable.exc_value)
        else:
            before(unraisable)

    sys.unraisablehook = keep
    try:
        return function(*arguments)  # type: ignore[no-any-return]
    finally:
        sys.unraisablehook = before


def raise_failure(number: int) -> None:
    """Raises what a callback has raised during a call of the library that answered this number, or else the failure of
    that number, if it is one."""
    exception = raised.pop(get_ident(), None)
    if exception is not None:
        try:
            raise exception
        finally:
            # This frame is part of the exception's traceback.
            del exception
    if number == 0:
        return
    record = _library.FailureRecord()
    _library.get_failure(byref(record))
    raise QMFailure(number, _library.text_of(record.description))


@contract("LastFailure")
def last_failure() -> LastFailure | None:
    """The last failure that the library caught on this thread; None for none."""
    record = _library.FailureRecord()
    _library.last_failure(byref(record))
    if record.number == 0:
        return None
    return LastFailure(record.number, _library.text_of(record.description), _library.text_of(record.operation))


@contract("ClearLastFailure")
def clear_last_failure() -> None:
    """Forgets the last failure of this thread."""
    _library.clear_last_failure()
