"""Checks of numbers, flags and enumerations. Each returns the argument as the library takes it, or raises an exception
that names the argument, the value and the rule."""

import math
import operator
import reprlib
from collections.abc import Iterable
from ctypes import c_float
from enum import Enum
from numbers import Real
from typing import Any, Final, TypeVar

import numpy as np
import numpy.typing as npt

from zepbmp._types import Field

INT32_MIN: Final = -(2**31)
INT32_MAX: Final = 2**31 - 1
UINT32_MAX: Final = 2**32 - 1


class _Shortened(reprlib.Repr):
    """One line, whatever the value."""

    def __init__(self) -> None:
        super().__init__()
        self.maxother = 100

    def repr1(self, value: Any, level: int) -> str:
        return " ".join(line.strip() for line in super().repr1(value, level).splitlines())

    def repr_int(self, value: int, level: int) -> str:
        # Python refuses to write very long ones.
        return str(value) if value.bit_length() <= 128 else f"an integer of {value.bit_length()} bits"

    def repr_ndarray(self, array: Any, level: int) -> str:
        return f"an array {array.shape} of {array.dtype}"


_shortened: Final = _Shortened()
_Member = TypeVar("_Member", bound=Enum)


def bad_value(name: str, value: object, rule: str) -> ValueError:
    return ValueError(f"{name} is {_shortened.repr(value)}: {rule}")


def bad_type(name: str, value: object, rule: str) -> TypeError:
    return TypeError(f"{name} is {_shortened.repr(value)} ({type(value).__name__}): {rule}")


def names_of(members: Iterable[Enum]) -> str:
    return " or ".join(one.name for one in members)


def integer(name: str, value: Any, low: int = INT32_MIN, high: int = INT32_MAX) -> int:
    if type(value) is not int:
        if isinstance(value, Enum):
            raise bad_type(name, value, "must be a plain integer")
        try:
            value = operator.index(value)
        except TypeError:
            raise bad_type(name, value, "must be an integer") from None
    if not low <= value <= high:
        raise bad_value(name, value, f"must lie in {low}..{high}")
    return int(value)


def single(name: str, value: Any, low: float = -math.inf, high: float = math.inf, where: str = "") -> float:
    """A number as the single precision float that the library gets, which is what has to lie in low..high."""
    if type(value) is not float and (not isinstance(value, Real) or isinstance(value, Enum)):
        raise bad_type(name, value, "must be a number")
    try:
        rounded = c_float(float(value)).value
    except OverflowError:
        rounded = math.inf
    if not math.isfinite(rounded):
        raise bad_value(name, value, "must be finite in single precision")
    if not low <= rounded <= high:
        raise bad_value(name, value, f"must lie in {low}..{high}{where}")
    return rounded


def array(name: str, value: Any) -> npt.NDArray[Any]:
    try:
        return np.asarray(value)
    except ValueError as error:
        raise bad_value(name, value, "its rows must be as long as each other") from error


def member(name: str, value: Any, kind: type[_Member]) -> _Member:
    if type(value) is not kind:
        raise bad_type(name, value, f"must be a zepbmp.{kind.__name__}")
    return value


def flag(name: str, value: Any) -> bool:
    if type(value) is not bool:
        raise bad_type(name, value, "must be True or False")
    return value


ANY_LINES: Final = tuple(Field)
ONE_FIELD: Final = (Field.EVEN, Field.ODD)
FRAME_OR_FIELD: Final = (Field.FRAME, Field.EVEN, Field.ODD)


def field(value: Any, allowed: tuple[Field, ...], name: str = "field") -> Field:
    if type(value) is not Field:
        raise bad_type(name, value, "must be a zepbmp.Field")
    if value not in allowed:
        raise bad_value(name, value, f"must be {names_of(allowed)}")
    return value
