"""The host's functions that the library calls: settings, the statement trace, progress.

Each runs on the thread that called the library, so what it needs is kept by thread. What one raises does not go through
the library: it is kept in `raised`, the library hears of a failure, and the call that the host made raises it, also
where the library keeps failures to itself.
"""

import ctypes
import threading
from collections.abc import Mapping, MutableMapping
from ctypes import byref
from os import PathLike
from threading import get_ident
from typing import Any, Callable

from . import _library, _values
from ._contracts import contract
from ._failure import QMFailure, expect_callbacks, raise_failure, raised
from ._objects import Object, living

_INVALID_CALL = 5


class _Callbacks(threading.local):
    settings: "SettingsComponent | None" = None
    trace: Callable[[str], object] | None = None
    store_progress: Callable[[int, int], object] | None = None


_here = _Callbacks()


def _describe(exception: BaseException) -> tuple[int, str]:
    if isinstance(exception, QMFailure) and isinstance(exception.number, int) and exception.number:
        return exception.number, str(exception.description)
    text = str(exception)
    return _INVALID_CALL, type(exception).__name__ + (f": {text}" if text else "")


def _answered(reply: int, work: Callable[[], str | None]) -> int:
    """Does a callback's work and answers the library."""
    thread = get_ident()
    try:
        # What was raised before ends the call that it interrupts; nothing more is asked of the host in it.
        exception = raised.get(thread)
        text = None
        number = 0
        if exception is None:
            text = work()
        else:
            number, text = _describe(exception)
        encoded = _values.encode(text) if text else b""
    except BaseException as exception:
        raised[thread] = exception
        number, text = _describe(exception)
        encoded = text.encode(errors="replace")
    _library.answer(reply, encoded, len(encoded))
    return number


def _setting(method: str, reply: int, *arguments: object) -> int:
    def work() -> str | None:
        text = getattr(_here.settings, method)(*arguments)
        if text is not None and not isinstance(text, str):
            raise TypeError(f"{method} of the settings component answers a str or None, not {type(text).__name__}")
        return text

    return _answered(reply, work)


def _bytes_at(data: int | None, length: int) -> str:
    return ctypes.string_at(data, length).decode(errors="replace") if data and length else ""


def _user_setting(key: bytes, reply: int, payload: int) -> int:
    return _setting("user_setting", reply, key.decode())


def _order_default(key: bytes, reply: int, payload: int) -> int:
    return _setting("order_default", reply, key.decode())


def _set_order_default(key: bytes, data: int, length: int, reply: int, payload: int) -> int:
    return _setting("set_order_default", reply, key.decode(), _bytes_at(data, length))


def _save_order_defaults(reply: int, payload: int) -> int:
    return _setting("save_order_defaults", reply)


def _registration(field: bytes, reply: int, payload: int) -> int:
    return _setting("registration", reply, field.decode())


def _trace(data: int, length: int, reply: int, payload: int) -> int:
    def work() -> None:
        if _here.trace is not None:
            _here.trace(_bytes_at(data, length))

    return _answered(reply, work)


def _import_progress(orders: int, lines: int, lines_in_all: int, go_on: Any, reply: int, importer: int) -> int:
    def work() -> None:
        progress = getattr(living(importer), "_progress", None)
        if progress is not None:
            answer = progress(orders, lines, lines_in_all)
            if answer is not None and not answer:
                go_on[0] = 0

    return _answered(reply, work)


def _store_progress(done: int, in_all: int, reply: int, payload: int) -> int:
    def work() -> None:
        if _here.store_progress is not None:
            _here.store_progress(done, in_all)

    return _answered(reply, work)


class SettingsComponent:
    """What a host derives from to hand its settings to the library; see install_settings."""

    def user_setting(self, key: str) -> str | None:
        """The user's setting of that key, as "OrderingDatabasePath", the folder of the store; None or the empty text
        when it is unset."""
        raise NotImplementedError(f"{type(self).__qualname__} has no user_setting")

    def order_default(self, key: str) -> str | None:
        """What a new order starts with under that DEFAULT_ key; None or the empty text when it is unset."""
        return None

    def set_order_default(self, key: str, value: str) -> None:
        """Sets an order default; the empty text unsets it. It counts from save_order_defaults on."""

    def save_order_defaults(self) -> None:
        """Called after the last set_order_default: what was set must be kept when it returns."""

    def registration(self, field: str) -> str | None:
        """A field of the user's registration: "City", "CompanyName", "Address1", "Address2", "Fax", "Telephone",
        "TelephoneExt", "Country", "Email", "FirstName", "LastName", "State", "StateOr", "ZipOrPostCode",
        "AccountNumber"."""
        return None


class DictSettings(SettingsComponent):
    """Settings in dictionaries, which the host may keep where it likes.

    settings: the user's settings; "OrderingDatabasePath" names the folder of the store
    order_defaults: what a new order starts with; written by SaveSummary
    registration: the user as registered, by field
    """

    def __init__(
        self,
        settings: Mapping[str, str],
        order_defaults: MutableMapping[str, str] | None = None,
        registration: Mapping[str, str] | None = None,
    ) -> None:
        self.settings = settings
        self.order_defaults: MutableMapping[str, str] = {} if order_defaults is None else order_defaults
        self.registration_fields: Mapping[str, str] = {} if registration is None else registration

    def user_setting(self, key: str) -> str | None:
        return self.settings.get(key)

    def order_default(self, key: str) -> str | None:
        return self.order_defaults.get(key)

    def set_order_default(self, key: str, value: str) -> None:
        self.order_defaults[key] = value

    def registration(self, field: str) -> str | None:
        return self.registration_fields.get(field)


# What the library calls; it must be there as long as the library may.
_SETTINGS = _library.Settings(
    _library.Reader(_user_setting),
    _library.Reader(_order_default),
    _library.Writer(_set_order_default),
    _library.Saver(_save_order_defaults),
    _library.Reader(_registration),
    None,
)
_TRACE = _library.Trace(_trace)
_IMPORT_PROGRESS = _library.ImportProgress(_import_progress)
_STORE_PROGRESS = _library.StoreProgress(_store_progress)


@contract("InstallSettings")
def install_settings(component: SettingsComponent | None) -> None:
    """Chooses the settings component of this thread, None for the library's own over its settings file. Any object will
    do that has the methods of SettingsComponent. An exception of one of them is raised by the call of the library that
    asked, also where the library swallows such a failure."""
    if component is not None:
        for method in ("user_setting", "order_default", "set_order_default", "save_order_defaults", "registration"):
            if not callable(getattr(component, method, None)):
                raise TypeError(f"a settings component has a method {method}, which {type(component).__name__} has not")
    status = _library.install_settings(None if component is None else byref(_SETTINGS), None)
    if status:
        raise_failure(status)
    _here.settings = component
    expect_callbacks()


@contract("CreateFileSettings")
def install_settings_file(file: "str | PathLike[str] | None" = None) -> None:
    """Chooses the library's own settings component over that file for this thread, None for the default file."""
    status = _library.install_settings_file(None if file is None else _values.encode_path(file))
    if status:
        raise_failure(status)
    _here.settings = None


@contract("SetStatementTrace")
def set_statement_trace(trace: Callable[[str], object] | None) -> None:
    """Calls trace with the text of each statement of this thread, before it runs; None ends it. An exception that it
    raises stops the statement, and is raised by the call of the library whose statement it was."""
    _require_callable(trace)
    status = _library.set_statement_trace(_library.Trace(0) if trace is None else _TRACE, None)
    if status:
        raise_failure(status)
    _here.trace = trace
    expect_callbacks()


class Importer(Object):
    """What is Python's own of an importer."""

    __slots__ = ("_progress",)
    _progress: Callable[[int, int, int], object] | None

    def OnProgress(self, progress: Callable[[int, int, int], object] | None) -> None:
        _require_callable(progress)
        status = _library.on_import_progress(
            self._number, _library.ImportProgress(0) if progress is None else _IMPORT_PROGRESS, self._number
        )
        if status:
            raise_failure(status)
        self._progress = progress
        expect_callbacks()


class StoreProgress:
    """For the time of a call, where its callback finds the host's function."""

    def __init__(self, progress: Callable[[int, int], object] | None) -> None:
        _require_callable(progress)
        self._progress = progress
        self.entry = _library.StoreProgress(0) if progress is None else _STORE_PROGRESS

    def __enter__(self) -> Any:
        self._before = _here.store_progress
        _here.store_progress = self._progress
        expect_callbacks()
        return self.entry

    def __exit__(self, *exception: object) -> None:
        _here.store_progress = self._before


def _require_callable(function: object) -> None:
    if function is not None and not callable(function):
        raise TypeError(f"takes a function or None, not {type(function).__name__}")
