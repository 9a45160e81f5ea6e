"""The library's classes, made from its own description of them."""

from ctypes import POINTER, byref, c_size_t
from typing import Any, NamedTuple

from . import _contracts, _library, _objects, _values
from ._callbacks import Importer
from ._failure import raise_failure, raised
from ._library import METHOD, PROPERTY_GET, Value
from ._objects import Collection, ErrorRecord, Object, Walk, answer, call, fill
from ._values import Filler


class ParameterInfo(NamedTuple):
    name: str
    type: str
    is_optional: bool
    default: object  # None for what the member itself looks at


class MemberInfo(NamedTuple):
    name: str
    kind: int
    type: str
    is_default: bool
    parameters: tuple[ParameterInfo, ...]


class ClassInfo(NamedTuple):
    name: str
    is_creatable: bool
    element_type: str
    members: tuple[MemberInfo, ...]

    def property(self, name: str) -> tuple[MemberInfo | None, MemberInfo | None]:
        """How a property is read and written."""
        get = put = None
        for member in self.members:
            if member.name == name and member.kind == PROPERTY_GET:
                get = member
            elif member.name == name and member.kind != METHOD:
                put = member
        return get, put


def _name(text: bytes) -> str:
    return text.decode()


def _default(value: Value) -> object:
    if value.kind == _library.TEXT:
        return _library.text_of(value.text)
    return _values.plain(value)


def describe() -> list[ClassInfo]:
    """The library's description of its classes."""
    first = POINTER(POINTER(_library.Class))()
    count = c_size_t()
    status = _library.classes(byref(first), byref(count))
    if status:
        raise_failure(status)
    described = []
    for position in range(count.value):
        class_ = first[position].contents
        members = []
        for member in class_.members[: class_.member_count]:
            parameters = tuple(
                ParameterInfo(
                    _name(parameter.name),
                    _name(parameter.type),
                    parameter.is_optional != 0,
                    _default(parameter.default_value),
                )
                for parameter in member.parameters[: member.parameter_count]
            )
            members.append(
                MemberInfo(_name(member.name), member.kind, _name(member.type), member.is_default != 0, parameters)
            )
        described.append(
            ClassInfo(_name(class_.name), class_.is_creatable != 0, _name(class_.element_type), tuple(members))
        )
    return described


_FILLERS: dict[str, Filler] = {
    "Boolean": _values.fill_boolean,
    "Integer": _values.fill_integer,
    "Currency": _values.fill_currency,
    "Date": _values.fill_date,
    "String": _values.fill_text,
    "Variant": _values.fill_any,
}

# What is answered and taken for each of the library's types, as it is written in Python. A reference may be None, which
# the type leaves out: most members never answer it, and who uses one would have to test each.
ANSWERED = {
    "": "None",
    "Boolean": "bool",
    "Integer": "int",
    "Currency": "Decimal",
    "Date": "datetime | None",
    "String": "str",
    "Variant": "Any",
}
TAKEN = {
    "Boolean": "bool",
    "Integer": "int",
    "Currency": "Decimal | int",
    "Date": "date | None",
    "String": "str",
    "Variant": "bool | int | float | str | Decimal | date | Object | None",
}


def answered(type_: str) -> str:
    return ANSWERED.get(type_, type_)


def taken(type_: str) -> str:
    return TAKEN.get(type_, f"{type_} | None")


def signature(member: MemberInfo) -> str:
    """The parameters and the answer of a method, in Python."""
    parameters = ["self"]
    for parameter in member.parameters:
        default = f" = {parameter.default!r}" if parameter.is_optional else ""
        parameters.append(f"{parameter.name}: {taken(parameter.type)}{default}")
    return f"({', '.join(parameters)}) -> {answered(member.type)}"


def _filler(parameter: ParameterInfo) -> Filler:
    filler = _FILLERS.get(parameter.type) or _values.reference_filler(_objects.classes, parameter.type)
    left_out = parameter.is_optional and parameter.default is None
    return _values.optional(filler) if left_out else filler


def _make_property(class_: ClassInfo, name: str) -> property:
    get, put = class_.property(name)
    assert get is not None
    encoded = name.encode()
    library_get, library_put = _library.get, _library.put

    def read(self: Object) -> Any:
        value = Value()
        status = library_get(self._number, encoded, None, 0, byref(value))
        if status or raised:
            raise_failure(status)
        return answer(value)

    doc = f"{_contracts.of_member(class_.name, name)}\n\nType: {answered(get.type)}."
    if put is None:
        return property(read, doc=f"{doc[:-1]}; can only be read.")
    filler = _filler(put.parameters[0])
    where = f"{class_.name}.{name}"

    def write(self: Object, given: Any) -> None:
        value = Value()
        fill(value, filler, given, where)
        status = library_put(self._number, encoded, byref(value))
        if status or raised:
            raise_failure(status)

    return property(read, write, doc=doc)


def _make_method(class_: ClassInfo, member: MemberInfo) -> Any:
    """A function with the method's own parameters, so that a wrong call is told as Python tells it."""
    where = f"{class_.name}.{member.name}"
    fillers = tuple(
        (_filler(parameter), f"{where}: {parameter.name}") for parameter in member.parameters
    )
    names = [parameter.name for parameter in member.parameters]
    parameters = [
        f"{parameter.name}={parameter.default!r}" if parameter.is_optional else parameter.name
        for parameter in member.parameters
    ]
    source = (
        f"def {member.name}({', '.join(['self', *parameters])}):\n"
        f"    return _call(self, _name, _fillers, ({''.join(name + ', ' for name in names)}))\n"
    )
    scope: dict[str, Any] = {"_call": call, "_name": member.name.encode(), "_fillers": fillers}
    exec(source, scope)
    function = scope[member.name]
    function.__qualname__ = where
    function.__module__ = __package__
    function.__doc__ = _contracts.of_member(class_.name, member.name)
    function.__annotations__ = {parameter.name: _Shown(taken(parameter.type)) for parameter in member.parameters}
    function.__annotations__["return"] = _Shown(answered(member.type))
    return function


class _Shown(str):
    """A type that help() shows without quotes."""

    __slots__ = ()
    __repr__ = str.__str__


_BASES: dict[str, type[Object]] = {"ErrorInfo": ErrorRecord, "Enumeration": Walk, "OrderHistoryImporter": Importer}


def _make_class(class_: ClassInfo) -> type[Object]:
    base = _BASES.get(class_.name, Collection if class_.element_type else Object)
    members: dict[str, Any] = {
        "__slots__": (),
        "__doc__": _contracts.of_class(class_.name),
        "__module__": __package__,
        "_creatable": class_.is_creatable,
    }
    for member in class_.members:
        if member.kind == METHOD:
            members[member.name] = _make_method(class_, member)
            if member.is_default and member.name != "Item":
                raise ImportError(f"qm_ordering: {class_.name}.{member.name} is a default member of another name")
        elif member.kind == PROPERTY_GET:
            members[member.name] = _make_property(class_, member.name)
    if class_.element_type:
        key = next(member for member in class_.members if member.is_default).parameters[0]
        members["_holds_texts"] = class_.element_type == "String"
        # The other collections have ids of the store for keys.
        members["_has_positions"] = members["_holds_texts"] or key.type == "Variant"
    return type(class_.name, (base,), members)


Importer.OnProgress.__doc__ = (
    "Calls progress with the purchase orders begun, the lines done and the lines in all; None ends it.\n\n"
    + _contracts.of_member("OrderHistoryImporter", "OnProgress")
)
_objects.classes.update((class_.name, _make_class(class_)) for class_ in describe())
globals().update(_objects.classes)
__all__ = list(_objects.classes)
