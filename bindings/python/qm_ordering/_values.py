"""Values on their way into the library and out of it."""

import datetime
import operator
from ctypes import byref
from decimal import Context, Decimal, Inexact, InvalidOperation
from os import PathLike, fspath
from typing import Any, Callable

from . import _library
from ._library import BOOLEAN, CURRENCY, DATE, DOUBLE, EMPTY, INTEGER, MISSING, OBJECT, TEXT, Value, text_of

# Puts a Python value into one of the library's. Raises TypeError, ValueError or OverflowError.
Filler = Callable[[Value, Any], None]

ZERO_DATE = datetime.datetime(1899, 12, 30)

# Contexts of our own: the host's may round.
_FOUR_DECIMALS = Decimal("0.0001")
_exactly = Context(prec=40, traps=[Inexact, InvalidOperation])


def _wrong_type(given: object, wanted: str) -> TypeError:
    return TypeError(f"takes {wanted}, not {type(given).__name__}")


def _not_in_range(wanted: str, given: int | Decimal) -> OverflowError:
    # Python refuses to write an int of thousands of digits.
    written = "" if isinstance(given, int) and given.bit_length() > 64 else f", which {given} is not"
    return OverflowError(f"takes {wanted}{written}")


def _is_integer(number: int) -> bool:
    return -(2**31) <= number < 2**31


def is_beyond_integers(given: Any) -> bool:
    """Whether this is an int, or as good as one, that the library's integers cannot hold."""
    return hasattr(given, "__index__") and not _is_integer(operator.index(given))


def fill_boolean(value: Value, given: object) -> None:
    if not isinstance(given, bool):
        raise _wrong_type(given, "a bool")
    value.kind = BOOLEAN
    value.boolean = given


def fill_integer(value: Value, given: Any) -> None:
    # True is -1 in the library and 1 in Python.
    if isinstance(given, bool):
        raise _wrong_type(given, "an int")
    try:
        number = operator.index(given)
    except TypeError:
        raise _wrong_type(given, "an int") from None
    if not _is_integer(number):
        raise _not_in_range("an int of 32 bits", number)
    value.kind = INTEGER
    value.integer = number


def fill_double(value: Value, given: float) -> None:
    value.kind = DOUBLE
    value.number = given


def fill_currency(value: Value, given: Any) -> None:
    if isinstance(given, bool) or not isinstance(given, (Decimal, int)):
        hint = "; a float is not exact, write Decimal('12.50')" if isinstance(given, float) else ""
        raise TypeError(f"takes a decimal.Decimal or an int for money, not {type(given).__name__}{hint}")
    if isinstance(given, int):
        scaled = given * 10_000
    elif not given.is_finite():
        raise ValueError(f"takes money, which {given} is not")
    else:
        try:
            scaled = int(_exactly.scaleb(_exactly.quantize(given, _FOUR_DECIMALS), 4))
        except Inexact:
            raise ValueError(f"takes money with four decimals, which {given} is not: round it before") from None
        except InvalidOperation:
            scaled = 2**63
    if not -(2**63) <= scaled < 2**63:
        raise _not_in_range("money from -922337203685477.5808 to 922337203685477.5807", given)
    value.kind = CURRENCY
    value.currency = scaled


def fill_date(value: Value, given: object) -> None:
    if given is None:
        given = ZERO_DATE
    if not isinstance(given, datetime.date):
        raise _wrong_type(given, "a datetime.datetime, a datetime.date or None")
    if given.year < 100:
        raise ValueError(f"takes a date from the year 100 on, which {given} is not")
    value.kind = DATE
    parts = value.date
    parts.year, parts.month, parts.day = given.year, given.month, given.day
    if not isinstance(given, datetime.datetime):
        parts.hour = parts.minute = parts.second = 0
        return
    if given.tzinfo is not None:
        raise ValueError(
            "takes a time as the user's clock shows it, without a zone; for that of an aware datetime write "
            "value.astimezone().replace(tzinfo=None)"
        )
    if given.microsecond:
        raise ValueError(f"takes a time to the second, which {given} is not; write value.replace(microsecond=0)")
    parts.hour, parts.minute, parts.second = given.hour, given.minute, given.second


def fill_text(value: Value, given: object) -> None:
    if not isinstance(given, str):
        raise _wrong_type(given, "a str")
    encoded = encode(given)
    value.kind = TEXT
    text = value.given_text
    text.data = encoded
    text.length = len(encoded)


def encode(text: str) -> bytes:
    try:
        return text.encode()
    except UnicodeEncodeError as error:
        raise ValueError(
            f"takes a text of Unicode characters, and {ascii(text[error.start])} at index {error.start} is half a "
            "surrogate pair"
        ) from None


def encode_path(path: "str | PathLike[str]") -> bytes:
    """A file's name for the library, also one that is not UTF-8 and came from the system."""
    name = fspath(path)
    if not isinstance(name, str):
        raise _wrong_type(name, "a str or a path")
    if "\0" in name:
        raise ValueError("takes the name of a file, which holds no zero byte")
    return name.encode(errors="surrogateescape")


def fill_any(value: Value, given: object) -> None:
    """For what the library declares as of any kind. None is a value that was never assigned."""
    if given is None:
        value.kind = EMPTY
        return
    for kind, fill in _BY_TYPE:
        if isinstance(given, kind):
            fill(value, given)
            return
    raise _wrong_type(given, "None, a bool, an int, a float, a Decimal, a datetime, a str or an object of the library")


def fill_reference(value: Value, given: Any) -> None:
    value.kind = OBJECT
    value.object = 0 if given is None else given._number


def reference_filler(classes: dict[str, type], name: str) -> Filler:
    """For a reference to an object of that class, which may not be there yet."""

    def fill(value: Value, given: object) -> None:
        if given is not None and not isinstance(given, classes[name]):
            raise _wrong_type(given, f"an object of the class {name} or None")
        fill_reference(value, given)

    return fill


def optional(fill: Filler) -> Filler:
    """None for an argument that is not given."""

    def fill_unless_none(value: Value, given: object) -> None:
        if given is None:
            value.kind = MISSING
        else:
            fill(value, given)

    return fill_unless_none


# A bool is an int, and a datetime a date. The library's own class comes last, from _objects.
_BY_TYPE: list[tuple[type, Filler]] = [
    (bool, fill_boolean),
    (int, fill_integer),
    (str, fill_text),
    (float, fill_double),
    (Decimal, fill_currency),
    (datetime.date, fill_date),
]


def register_object_class(base: type) -> None:
    _BY_TYPE.append((base, fill_reference))


def money(scaled: int) -> Decimal:
    return _exactly.scaleb(Decimal(scaled), -4)


def _date(parts: Any) -> datetime.datetime | None:
    date = datetime.datetime(parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second)
    return None if date == ZERO_DATE else date


def take_text(value: Value) -> str:
    text = text_of(value.text)
    _library.clear(byref(value))
    return text


def plain(value: Value) -> object:
    """What a value holds that is neither a text nor an object."""
    kind = value.kind
    if kind == INTEGER:
        return value.integer
    if kind == BOOLEAN:
        return value.boolean != 0
    if kind == CURRENCY:
        return money(value.currency)
    if kind == DATE:
        return _date(value.date)
    if kind == DOUBLE:
        return value.number
    return None
