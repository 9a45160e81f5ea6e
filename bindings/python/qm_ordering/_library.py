"""The shared library and its C interface, as ctypes sees them."""

import ctypes
import os
from ctypes import CFUNCTYPE, POINTER, c_char_p, c_double, c_int32, c_int64, c_size_t, c_uint64, c_void_p
from typing import Any

from ._version import LIBRARY_NAME, VERSION

MISSING, EMPTY, NULL, BOOLEAN, INTEGER, DOUBLE, CURRENCY, DATE, TEXT, OBJECT = range(10)
PROPERTY_GET, PROPERTY_LET, PROPERTY_SET, METHOD = range(4)


class DateParts(ctypes.Structure):
    _fields_ = [(part, c_int32) for part in ("year", "month", "day", "hour", "minute", "second")]


class GivenText(ctypes.Structure):
    _fields_ = [("data", c_char_p), ("length", c_size_t)]


class AnsweredText(ctypes.Structure):
    # An address, since a text may hold zero bytes.
    _fields_ = [("data", c_void_p), ("length", c_size_t)]


class _Content(ctypes.Union):
    _fields_ = [
        ("boolean", c_int32),
        ("integer", c_int32),
        ("number", c_double),
        ("currency", c_int64),
        ("date", DateParts),
        ("given_text", GivenText),
        ("text", AnsweredText),
        ("object", c_uint64),
    ]


class Value(ctypes.Structure):
    _anonymous_ = ("content",)
    _fields_ = [("kind", c_int32), ("content", _Content)]


class FailureRecord(ctypes.Structure):
    _fields_ = [("number", c_int32), ("description", AnsweredText), ("operation", AnsweredText)]


class Parameter(ctypes.Structure):
    _fields_ = [("name", c_char_p), ("type", c_char_p), ("is_optional", c_int32), ("default_value", Value)]


class Member(ctypes.Structure):
    _fields_ = [
        ("name", c_char_p),
        ("kind", c_int32),
        ("type", c_char_p),
        ("is_default", c_int32),
        ("parameter_count", c_size_t),
        ("parameters", POINTER(Parameter)),
    ]


class Class(ctypes.Structure):
    _fields_ = [
        ("name", c_char_p),
        ("is_creatable", c_int32),
        ("element_type", c_char_p),
        ("member_count", c_size_t),
        ("members", POINTER(Member)),
    ]


# The reply and the payload of a callback are addresses.
Reader = CFUNCTYPE(c_int32, c_char_p, c_void_p, c_void_p)
Writer = CFUNCTYPE(c_int32, c_char_p, c_void_p, c_size_t, c_void_p, c_void_p)
Saver = CFUNCTYPE(c_int32, c_void_p, c_void_p)
Trace = CFUNCTYPE(c_int32, c_void_p, c_size_t, c_void_p, c_void_p)
ImportProgress = CFUNCTYPE(c_int32, c_int64, c_int64, c_int64, POINTER(c_int32), c_void_p, c_void_p)
StoreProgress = CFUNCTYPE(c_int32, c_int64, c_int64, c_void_p, c_void_p)


class Settings(ctypes.Structure):
    _fields_ = [
        ("user_setting", Reader),
        ("order_default", Reader),
        ("set_order_default", Writer),
        ("save_order_defaults", Saver),
        ("registration", Reader),
        ("dispose", c_void_p),
    ]


def _candidates() -> list[str]:
    """Where the library may be: where the environment says, else beside this package, else where the system's loader
    looks."""
    named = os.environ.get("QM_ORDERING_LIBRARY")
    if named:
        return [named]
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), LIBRARY_NAME)
    return [beside, LIBRARY_NAME] if os.path.exists(beside) else [LIBRARY_NAME]


def _load() -> tuple[ctypes.CDLL, ctypes.PyDLL]:
    """The library twice: calls that may wait for a disk or another program let other threads run meanwhile; those that
    only read or write memory do not, which costs less."""
    why = []
    for name in _candidates():
        try:
            return ctypes.CDLL(name), ctypes.PyDLL(name)
        except OSError as error:
            why.append(str(error))
    raise ImportError(
        f"qm_ordering: its library cannot be loaded: {'; '.join(why)}. Install the package libqm-ordering0, put "
        f"{LIBRARY_NAME} beside this package, or name its file in the environment variable QM_ORDERING_LIBRARY."
    )


def _fits(library_version: str) -> bool:
    """Before version 1 a minor version may change what a host relies on, after it a major one."""
    mine, its = VERSION.split("."), library_version.split(".")
    return mine[0] == its[0] and (mine[0] != "0" or mine[1] == its[1])


def _declare(library: ctypes.CDLL, name: str, *arguments: Any) -> Any:
    try:
        function = getattr(library, "qm_ordering_" + name)
    except AttributeError:
        raise ImportError(
            f"qm_ordering: the library {library._name} has no function qm_ordering_{name}: it is another library, or "
            f"not of the version {VERSION} that this package is made for."
        ) from None
    function.argtypes = arguments
    function.restype = c_int32
    return function


_waiting, _quick = _load()

version = _declare(_quick, "version", POINTER(c_char_p))
_text = c_char_p()
version(ctypes.byref(_text))
LIBRARY_VERSION = (_text.value or b"").decode()
if not _fits(LIBRARY_VERSION):
    raise ImportError(
        f"qm_ordering: the library {_waiting._name} is of version {LIBRARY_VERSION}, this package of version "
        f"{VERSION}. Install both of one version."
    )

_object = c_uint64
_to_object = POINTER(c_uint64)
_to_value = POINTER(Value)

get_failure = _declare(_quick, "get_failure", POINTER(FailureRecord))
last_failure = _declare(_quick, "last_failure", POINTER(FailureRecord))
clear_last_failure = _declare(_quick, "clear_last_failure")
classes = _declare(_quick, "classes", POINTER(POINTER(POINTER(Class))), POINTER(c_size_t))
class_name = _declare(_quick, "class_name", _object, POINTER(c_char_p))
release = _declare(_quick, "release", _object)
clear = _declare(_quick, "clear", _to_value)
get = _declare(_quick, "get", _object, c_char_p, c_void_p, c_size_t, _to_value)
put = _declare(_quick, "put", _object, c_char_p, _to_value)
enumerate_ = _declare(_quick, "enumerate", _object, _to_object)
next_ = _declare(_quick, "next", _object, _to_value)
answer = _declare(_quick, "answer", c_void_p, c_char_p, c_size_t)
install_settings = _declare(_quick, "install_settings", POINTER(Settings), c_void_p)
install_settings_file = _declare(_quick, "install_settings_file", c_char_p)
set_statement_trace = _declare(_quick, "set_statement_trace", Trace, c_void_p)
on_import_progress = _declare(_quick, "on_import_progress", _object, ImportProgress, c_void_p)

create = _declare(_waiting, "create", c_char_p, _to_object)
call = _declare(_waiting, "call", _object, c_char_p, c_void_p, c_size_t, _to_value)
create_order_store = _declare(_waiting, "create_order_store", c_char_p)
order_store_path = _declare(_waiting, "order_store_path", _to_value)
check_order_store = _declare(_waiting, "check_order_store", _to_object)
repair_order_store = _declare(_waiting, "repair_order_store", _to_object)
backup_order_store = _declare(_waiting, "backup_order_store", c_char_p, _to_object, StoreProgress, c_void_p)
restore_order_store = _declare(_waiting, "restore_order_store", c_char_p, _to_value, StoreProgress, c_void_p)


def text_of(text: AnsweredText) -> str:
    """A text that the library answers. A byte that is not UTF-8, which another program may have put into the store,
    becomes U+FFFD: it must not cost the whole text."""
    return ctypes.string_at(text.data, text.length).decode(errors="replace") if text.length else ""
