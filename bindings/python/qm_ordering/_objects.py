"""The objects of the library as Python objects."""

import weakref
from ctypes import byref, c_char_p, c_uint64
from typing import TYPE_CHECKING, Any, Iterator
from weakref import _remove_dead_weakref  # type: ignore[attr-defined]

from . import _library, _values
from ._failure import QMFailure, raise_failure, raised, run
from ._library import OBJECT, TEXT, Value
from ._values import Filler

# The library's classes by their names.
classes: dict[str, type["Object"]] = {}


class _Reference(weakref.ref["Object"]):
    __slots__ = ("_as_parameter_",)
    _as_parameter_: int


# The Python object of each number that the library has given, so that one object of the library is one object here.
_references: dict[int, _Reference] = {}
_sweep_at = 1000


def _bind(self: "Object", number: int) -> None:
    """Makes this the object of the number; the caller's reference to that in the library becomes its own.

    It is given back when nothing can reach the object any more, on any thread. What does it is the library's function
    itself, to which ctypes hands the number of the weak reference: no instruction of Python runs then. At one the
    handler of a signal might raise, which would be lost, and another thread might be answered the number again.
    """
    global _sweep_at
    self._number = number
    reference = _Reference(self, _library.release)
    reference._as_parameter_ = number
    _references[number] = reference
    if len(_references) > _sweep_at:
        for known in list(_references):
            # Looks and removes in one step, as weakref's own dictionaries do. Between two, another thread, a finalizer
            # or the handler of a signal might bind the number anew; a lock would not keep out the latter two, which run
            # on the thread that holds it.
            _remove_dead_weakref(_references, known)
        _sweep_at = 2 * len(_references) + 1000


def object_of(number: int) -> "Object | None":
    """The object of a number, one reference to which the library has given to the caller."""
    if number == 0:
        return None
    reference = _references.get(number)
    if reference is not None:
        known = reference()
        if known is not None:
            _library.release(number)
            return known
    name = c_char_p()
    status = _library.class_name(number, byref(name))
    if status:
        raise_failure(status)
    made: Object = object.__new__(classes[(name.value or b"").decode()])
    _bind(made, number)
    return made


def living(number: int) -> "Object | None":
    """The object of a number, when there is one."""
    reference = _references.get(number)
    return None if reference is None else reference()


def answer(value: Value) -> Any:
    """What the library has answered."""
    kind = value.kind
    if kind == TEXT:
        return _values.take_text(value)
    if kind == OBJECT:
        return object_of(value.object)
    return _values.plain(value)


def fill(value: Value, filler: Filler, given: object, where: str) -> None:
    """Puts a Python value into one of the library's; what is wrong with it names the place."""
    try:
        filler(value, given)
    except (TypeError, ValueError, OverflowError) as error:
        raise type(error)(f"{where} {error}") from None


def call(
    self: "Object", name: bytes, fillers: tuple[tuple[Filler, str], ...], given: tuple[object, ...]
) -> Any:
    """Calls a method of the library's object."""
    count = len(given)
    arguments = (Value * count)() if count else None
    for position, (filler, where) in enumerate(fillers):
        fill(arguments[position], filler, given[position], where)  # type: ignore[index]
    value = Value()
    status = run(_library.call, self._number, name, arguments, count, byref(value))
    if status or raised:
        try:
            raise_failure(status)
        except BaseException:
            _library.clear(byref(value))
            raise
    return answer(value)


def _create(cls: type["Object"]) -> int:
    """A new object of the library for this class, or one that a host has derived from it."""
    name = next((base.__name__ for base in cls.__mro__ if classes.get(base.__name__) is base), None)
    if name is None or not classes[name]._creatable:
        raise TypeError(f"cannot create '{cls.__name__}' objects: the library's members answer them")
    number = c_uint64()
    status = run(_library.create, name.encode(), byref(number))
    if status or raised:
        try:
            raise_failure(status)
        except BaseException:
            _library.release(number)
            raise
    return number.value


class Object:
    """The base of the library's classes.

    An object belongs to the thread that made it: on another one, and in a process that was forked from its own, its
    members raise QMFailure -2147417842. It ends when the last reference to it goes, in Python and in the library. One
    object of the library is one object in Python as long as Python holds it. There are no copies, and none can be
    pickled.

    What a derived class has to do at the end belongs in a method or a context manager, not in __del__: of objects that
    refer to each other in a cycle Python releases those of the library before it calls any __del__, in which their
    members then raise QMFailure 91.
    """

    __slots__ = ("_number", "__weakref__")
    _number: int
    _creatable = False

    if not TYPE_CHECKING:  # which shall know the constructors only: this takes what any of them may

        def __new__(cls, *arguments, **keywords):
            # A class of the host's may have a constructor of its own, to which Python hands the arguments.
            if (arguments or keywords) and cls.__init__ is object.__init__:
                raise TypeError(f"{cls.__name__}() takes no arguments")
            number = _create(cls)
            self = super().__new__(cls)
            _bind(self, number)
            return self

    def __repr__(self) -> str:
        return f"<{type(self).__qualname__} {self._number:#x}>"

    def __reduce_ex__(self, protocol: Any) -> Any:
        raise TypeError(
            f"cannot copy or pickle '{type(self).__qualname__}' object: it stands for one object of the library in "
            "this process"
        )


_values.register_object_class(Object)


class ErrorRecord(Object):
    """What is Python's own of an error record."""

    __slots__ = ()
    Number: int
    Description: str

    def __bool__(self) -> bool:
        return self.Number != 0

    def __str__(self) -> str:
        return f"{self.Number}: {self.Description}" if self else "no error"

    def __repr__(self) -> str:
        return f"ErrorInfo({self.Number}, {self.Description!r})"

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, ErrorRecord):
            return NotImplemented
        return (self.Number, self.Description) == (other.Number, other.Description)

    def __hash__(self) -> int:
        return hash((self.Number, self.Description))


class Walk(Object):
    """What is Python's own of an enumeration."""

    __slots__ = ()

    def __iter__(self) -> Iterator[Any]:
        """Goes on where the walk is."""
        value = Value()
        while True:
            status = _library.next_(self._number, byref(value))
            if status or raised:
                raise_failure(status)
            if value.kind == _library.MISSING:
                return
            yield answer(value)


class Collection(Object):
    """What is Python's own of a collection."""

    __slots__ = ()
    Count: int
    _holds_texts = False
    _has_positions = False

    def Item(self, key: Any, /) -> Any:
        raise NotImplementedError

    def __len__(self) -> int:
        return self.Count

    def __iter__(self) -> Iterator[Any]:
        number = c_uint64()
        status = _library.enumerate_(self._number, byref(number))
        if status:
            raise_failure(status)
        walk: Any = object_of(number.value)
        return iter(walk)

    def __getitem__(self, key: Any) -> Any:
        """The member of that key, as the method Item; a member that is not there is a KeyError, for a position an
        IndexError."""
        if isinstance(key, slice):
            raise TypeError(f"{type(self).__name__} takes no slices; write list(...)[first:last]")
        absent = IndexError if self._has_positions and not isinstance(key, str) else KeyError
        try:
            member = self.Item(key)
        except QMFailure as failure:
            if failure.number not in (_ABSENT_KEY, _OUT_OF_BOUNDS):
                raise
            raise absent(key) from None
        except OverflowError:
            # Else it is that of a callback.
            if not _values.is_beyond_integers(key):
                raise
            raise absent(key) from None
        if member is None:
            raise absent(key)
        return member

    def __contains__(self, member: object) -> bool:
        """Whether that object, or in a collection of texts that text, is a member; for anything else, whether there is
        a member of that key."""
        if isinstance(member, Object):
            return any(held is member for held in self)
        if self._holds_texts:
            return any(held == member for held in self)
        try:
            self[member]
        except (LookupError, TypeError, ValueError, OverflowError):
            return False
        return True


_ABSENT_KEY = 5
_OUT_OF_BOUNDS = 9
