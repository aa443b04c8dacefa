"""The bitmap."""

import ctypes
from collections.abc import Callable
from typing import Any, Final, Self, SupportsIndex, TypeAlias, Union

import numpy as np
import numpy.typing as npt

from zepbmp import _checks, _library
from zepbmp._types import QUADS, Field, Format

_CREATE_ZERO: Final = 4
_SIZE_LIMIT_32_BIT: Final = 2**32 - 64

# What an array of a format holds: the type of its numbers, and how many of them make a pixel.
_ELEMENTS: Final[dict[Format, tuple[str, tuple[int, ...]]]] = {
    Format.YUY2: ("|u1", (2,)),
    Format.RGBQ: ("|u1", (4,)),
    Format.PWRW: ("<u2", ()),
    Format.QUAD3: ("|u1", (4,)),
    Format.QUAD4: ("|u1", (4,)),
    Format.QUAD5: ("|u1", (4,)),
    Format.RGB8: ("|u1", ()),
    Format.A8: ("|u1", ()),
}


Pixels: TypeAlias = Union[npt.ArrayLike, "Bitmap"]


class _Memory:
    """What bmp_create has made. It is freed once, whatever a subclass of Bitmap does with __del__."""

    __slots__ = ("address",)

    def __init__(self, address: int) -> None:
        self.address = address

    # The default argument keeps the function alive while the interpreter shuts down.
    def __del__(self, _destroy: Callable[[int], None] = _library.call["bmp_destroy"]) -> None:
        _destroy(self.address)


class Bitmap:
    """A picture in memory, which NumPy sees without a copy.

    width, height   pixels and lines, 0 and more
    format          a Format
    interlace       Field.FRAME: progressive; Field.EVEN or Field.ODD: interlaced. Of an interlaced source the mappings
                    sample one field
    zero            False leaves the bytes as the allocator gives them

    It is freed when nothing refers to it or to a view of it. Raises MemoryError where memory is short.

    >>> bitmap = zepbmp.Bitmap(5, 2, zepbmp.Format.RGBQ)
    >>> bitmap
    <zepbmp.Bitmap 5 x 2 RGBQ>
    >>> bitmap.array[1, 2] = 10, 20, 30, 0

    The standard library's copy and pickle make bitmaps of their own, with the pixels but not the palette:

    >>> import copy
    >>> copy.copy(bitmap).array[1, 2].tolist()
    [10, 20, 30, 0]
    """

    __slots__ = (
        "_memory",
        "_address",
        "_pixels",
        "_width",
        "_height",
        "_pitch",
        "_format",
        "_interlace",
        "__weakref__",
    )

    _memory: _Memory
    _address: int
    _pixels: int
    _width: int
    _height: int
    _pitch: int
    _format: Format
    _interlace: Field

    # Not __init__, which can be called again, when there are views of the memory.
    def __new__(
        cls,
        width: SupportsIndex,
        height: SupportsIndex,
        format: Format,
        interlace: Field = Field.FRAME,
        zero: bool = True,
    ) -> Self:
        width = _checks.integer("width", width, 0)
        height = _checks.integer("height", height, 0)
        _checks.member("format", format, Format)
        _checks.field(interlace, _checks.FRAME_OR_FIELD, "interlace")
        _checks.flag("zero", zero)
        pitch = (format.bytes_per_pixel * width + 15) & ~15
        if pitch > _checks.INT32_MAX:
            raise _checks.bad_value("width", width, "a line must be shorter than 2^31 bytes")
        fits = ctypes.sizeof(ctypes.c_void_p) > 4 or pitch * height < _SIZE_LIMIT_32_BIT
        flags = interlace | (_CREATE_ZERO if zero else 0)
        record = _library.call["bmp_create"](width, height, format, flags) if fits else None
        if not record:
            raise MemoryError(f"no memory for a bitmap of {width} x {height} {format.name}")

        header = record.contents
        memory = _Memory(ctypes.addressof(header))
        self = super().__new__(cls)
        self._memory = memory
        self._address = memory.address
        self._pixels = header.pixels
        self._width = width
        self._height = height
        self._pitch = header.pitch
        self._format = format
        self._interlace = interlace
        return self

    def __repr__(self) -> str:
        interlace = "" if self._interlace is Field.FRAME else f" interlaced {self._interlace.name}"
        return f"<zepbmp.Bitmap {self._width} x {self._height} {self._format.name}{interlace}>"

    def __reduce__(self) -> tuple[Any, ...]:
        # A subclass may have attributes.
        state = getattr(self, "__dict__", None)
        return type(self).from_array, (self.to_array(), self._format, self._interlace), state

    @classmethod
    def from_array(cls, array: Pixels, format: Format, interlace: Field = Field.FRAME) -> Self:
        """A new bitmap that holds a copy of an array, or of whatever else NumPy reads, contiguous or not.

        Shape and type are those of `Bitmap.array`, in any byte order.

        >>> import numpy as np
        >>> weights = np.arange(12, dtype=np.uint16).reshape(3, 4)
        >>> zepbmp.Bitmap.from_array(weights[::-1, ::2], zepbmp.Format.PWRW).array.tolist()
        [[8, 10], [4, 6], [0, 2]]
        """
        _checks.member("format", format, Format)
        source = _checks.array("array", array)
        if source.ndim < 2:
            raise _checks.bad_value("array", array, "must have a line and a column index")
        _check_array(source, format, source.shape[:2])
        bitmap = cls(source.shape[1], source.shape[0], format, interlace)
        bitmap.copy_from(source)
        return bitmap

    @property
    def width(self) -> int:
        """Pixels.

        >>> zepbmp.Bitmap(5, 2, zepbmp.Format.A8).width
        5
        """
        return self._width

    @property
    def height(self) -> int:
        """Lines.

        >>> zepbmp.Bitmap(5, 2, zepbmp.Format.A8).height
        2
        """
        return self._height

    @property
    def pitch(self) -> int:
        """Bytes from a line to the next: those of the pixels, rounded up to 16.

        >>> zepbmp.Bitmap(5, 2, zepbmp.Format.RGBQ).pitch
        32
        """
        return self._pitch

    @property
    def format(self) -> Format:
        """The pixel format.

        >>> zepbmp.Bitmap(5, 2, zepbmp.Format.A8).format.name
        'A8'
        """
        return self._format

    @property
    def interlace(self) -> Field:
        """Field.FRAME of a progressive picture, else Field.EVEN or Field.ODD.

        >>> zepbmp.Bitmap(5, 2, zepbmp.Format.YUY2, interlace=zepbmp.Field.ODD).interlace.name
        'ODD'
        """
        return self._interlace

    @property
    def array(self) -> npt.NDArray[Any]:
        """The pixels as an array, which shares their memory and keeps the bitmap alive.

        YUY2                           uint8 (height, width, 2): luma; U of an even pixel, V of an odd one
        RGBQ                           uint8 (height, width, 4): blue, green, red, fourth byte
        QUAD3, QUAD4, QUAD5            uint8 (height, width, 4)
        PWRW                           uint16 (height, width)
        RGB8, A8                       uint8 (height, width)

        >>> bitmap = zepbmp.Bitmap(5, 2, zepbmp.Format.PWRW)
        >>> bitmap.array[:, 3:] = zepbmp.WEIGHT_FULL
        >>> bitmap.array.tolist()
        [[0, 0, 0, 4096, 4096], [0, 0, 0, 4096, 4096]]
        """
        return np.asarray(self)

    @property
    def depth(self) -> npt.NDArray[np.float32]:
        """The same view of a QUAD3, QUAD4 or QUAD5 bitmap as float32 (height, width): a depth buffer, larger = nearer.

        >>> buffer = zepbmp.Bitmap(2, 1, zepbmp.Format.QUAD3)
        >>> buffer.depth[:] = 0.5
        >>> buffer.array[0, 0].tolist()
        [0, 0, 0, 63]
        """
        if self._format not in QUADS:
            raise _checks.bad_value("bitmap", self, f"its format must be {_checks.names_of(QUADS)}")
        view: npt.NDArray[np.float32] = np.asarray(_Depth(self))
        return view

    @property
    def __array_interface__(self) -> dict[str, Any]:
        """What NumPy makes an array of.

        >>> bitmap = zepbmp.Bitmap(5, 2, zepbmp.Format.PWRW)
        >>> bitmap.__array_interface__["strides"]
        (16, 2)
        """
        return self._described(*_ELEMENTS[self._format])

    def _described(self, typestr: str, pixel: tuple[int, ...]) -> dict[str, Any]:
        return {
            "version": 3,
            "typestr": typestr,
            "shape": (self._height, self._width, *pixel),
            "strides": (self._pitch, self._format.bytes_per_pixel, *(1 for _ in pixel)),
            "data": (self._pixels, False),
        }

    def copy_from(self, array: Pixels) -> None:
        """Copies an array in, or whatever else NumPy reads, contiguous or not, of the shape and type of `Bitmap.array`.

        It may be in any byte order, and a view of this bitmap.

        >>> bitmap = zepbmp.Bitmap(4, 2, zepbmp.Format.RGB8)
        >>> bitmap.copy_from(memoryview(b"abcdefgh").cast("B", (2, 4)))
        >>> bitmap.array.tolist()
        [[97, 98, 99, 100], [101, 102, 103, 104]]
        """
        source = _checks.array("array", array)
        view = self.array
        _check_array(source, self._format, view.shape[:2])
        np.copyto(view, source)

    def copy_to(self, array: npt.NDArray[Any]) -> None:
        """Copies the pixels into an array, contiguous or not, of the shape and type of `Bitmap.array`.

        It may be in any byte order, and a view of this bitmap.

        >>> import numpy as np
        >>> bitmap = zepbmp.Bitmap.from_array(np.full((1, 2), 7, np.uint8), zepbmp.Format.A8)
        >>> page = np.zeros((3, 4), np.uint8)
        >>> bitmap.copy_to(page[1:2, 1:3])
        >>> page.tolist()
        [[0, 0, 0, 0], [0, 7, 7, 0], [0, 0, 0, 0]]
        """
        if not isinstance(array, np.ndarray):
            raise _checks.bad_type("array", array, "must be a NumPy array")
        view = self.array
        _check_array(array, self._format, view.shape[:2])
        if not array.flags.writeable:
            raise _checks.bad_value("array", array, "must be writeable")
        np.copyto(array, view)

    def to_array(self) -> npt.NDArray[Any]:
        """A contiguous copy of `Bitmap.array`.

        >>> bitmap = zepbmp.Bitmap(5, 2, zepbmp.Format.RGBQ)
        >>> bitmap.array.flags.c_contiguous, bitmap.to_array().flags.c_contiguous
        (False, True)
        """
        return self.array.copy(order="C")

    def pointer(self, x: SupportsIndex = 0, y: SupportsIndex = 0) -> int:
        """The address of a pixel inside the bitmap, for other libraries. It is valid as long as the bitmap lives.

        >>> bitmap = zepbmp.Bitmap(5, 2, zepbmp.Format.RGBQ)
        >>> bitmap.pointer(1, 1) - bitmap.pointer()
        36
        """
        x = _checks.integer("x", x, 0, self._width - 1)
        y = _checks.integer("y", y, 0, self._height - 1)
        address: int = _library.call["bmp_pointer"](self._address, x, y)
        return address


class _Depth:
    """A bitmap's pixels as floats. The array made of it keeps it, thus the bitmap."""

    __slots__ = ("_bitmap",)

    def __init__(self, bitmap: Bitmap) -> None:
        self._bitmap = bitmap

    @property
    def __array_interface__(self) -> dict[str, Any]:
        return self._bitmap._described("<f4", ())


def _check_array(array: npt.NDArray[Any], format: Format, size: tuple[int, ...]) -> None:
    typestr, pixel = _ELEMENTS[format]
    if array.dtype.newbyteorder("=") != typestr:
        raise _checks.bad_type("array", array, f"its type must be {np.dtype(typestr)} for {format.name}")
    shape = (*size, *pixel)
    if array.shape != shape:
        raise _checks.bad_value("array", array, f"its shape must be {shape} for {format.name}")
