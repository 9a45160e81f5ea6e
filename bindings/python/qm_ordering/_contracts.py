"""What the comments of the library's headers say, which are the one place where the contracts stand."""

from typing import Callable, TypeVar

from ._comments import CLASSES, FUNCTIONS

_Function = TypeVar("_Function", bound=Callable[..., object])


def of_class(name: str) -> str:
    return CLASSES[name][""]


def of_member(class_name: str, member: str) -> str:
    return CLASSES[class_name][member]


def contract(function: str) -> Callable[[_Function], _Function]:
    """Puts the contract of the library's function behind what a docstring says of its use in Python."""

    def put(python_function: _Function) -> _Function:
        python_function.__doc__ = f"{python_function.__doc__}\n\n{FUNCTIONS[function]}"
        return python_function

    return put
