"""The file that holds the orders."""

from ctypes import byref, c_uint64
from os import PathLike
from typing import Any, Callable

from . import _library, _values
from ._callbacks import StoreProgress
from ._contracts import contract
from ._failure import raise_failure, raised, run
from ._objects import object_of


def _texts(function: Any, *arguments: Any) -> list[str]:
    number = c_uint64()
    status = run(function, *(byref(number) if argument is _ANSWER else argument for argument in arguments))
    texts: Any = object_of(number.value)
    if status or raised:
        raise_failure(status)
    return list(texts)


def _text(function: Any, *arguments: Any) -> str:
    value = _library.Value()
    status = run(function, *(byref(value) if argument is _ANSWER else argument for argument in arguments))
    text = _values.take_text(value) if value.kind == _library.TEXT else ""
    if status or raised:
        raise_failure(status)
    return text


# Stands for where the answer goes.
_ANSWER = object()


@contract("CreateOrderStore")
def create_order_store(folder: "str | PathLike[str]") -> None:
    """Makes an order store in the folder."""
    status = run(_library.create_order_store, _values.encode_path(folder))
    if status or raised:
        raise_failure(status)


@contract("OrderStorePath")
def order_store_path() -> str:
    """Where this thread's order store is."""
    return _text(_library.order_store_path, _ANSWER)


@contract("CheckOrderStore")
def check_order_store() -> list[str]:
    """Examines this thread's order store."""
    return _texts(_library.check_order_store, _ANSWER)


@contract("RepairOrderStore")
def repair_order_store() -> list[str]:
    """Repairs the totals of this thread's order store."""
    return _texts(_library.repair_order_store, _ANSWER)


@contract("BackupOrderStore")
def backup_order_store(
    file: "str | PathLike[str]", progress: Callable[[int, int], object] | None = None
) -> list[str]:
    """Copies this thread's order store into a file. progress is called with the pages done and those in all; what it
    raises ends the backup, which has changed nothing then, and is raised."""
    name = _values.encode_path(file)
    with StoreProgress(progress) as entry:
        return _texts(_library.backup_order_store, name, _ANSWER, entry, None)


@contract("RestoreOrderStore")
def restore_order_store(file: "str | PathLike[str]", progress: Callable[[int, int], object] | None = None) -> str:
    """Puts a backup in the place of this thread's order store. progress as for backup_order_store."""
    name = _values.encode_path(file)
    with StoreProgress(progress) as entry:
        return _text(_library.restore_order_store, name, _ANSWER, entry, None)
