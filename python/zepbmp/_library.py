"""The shared library: where it is found, its record and its functions.

Taken is the first of
    the file that the environment variable ZEPBMP_LIBRARY names ("system": no bundled library is looked for)
    the library that the package was built with
    the system's library, as the dynamic linker finds it
"""

import ctypes
import os
import sys
from ctypes import POINTER, Structure, c_float, c_int32, c_uint32, c_void_p
from pathlib import Path
from typing import Any, Final

VARIABLE: Final = "ZEPBMP_LIBRARY"
SYSTEM: Final = "system"
BUNDLED_NAME: Final = "zepbmp.dll" if sys.platform == "win32" else "libzepbmp.so"
_SYSTEM_NAMES: Final = ("zepbmp.dll",) if sys.platform == "win32" else ("libzepbmp.so.1",)


class Record(Structure):
    """A bitmap's header as the library keeps it."""

    _fields_ = [
        ("width", c_int32),
        ("height", c_int32),
        ("pitch", c_int32),
        ("bit_count", c_int32),
        ("pixels", c_void_p),
        ("dib_info", c_void_p),
        ("fourcc", c_uint32),
        ("interlace", c_uint32),
        ("reserved", c_uint32),
        ("bytes_per_pixel", c_int32),
        ("create_flags", c_uint32),
        ("format", c_uint32),
    ]


# Bitmaps travel as addresses.
_bitmap = _pointer = _handle = c_void_p
_i32, _u32, _float = c_int32, c_uint32, c_float

# fmt: off
PROTOTYPES: Final[dict[str, tuple[Any, tuple[Any, ...]]]] = {
    "bmp_create": (POINTER(Record), (_i32, _i32, _i32, _u32)),
    "bmp_destroy": (None, (_bitmap,)),
    "bmp_pointer": (c_void_p, (_bitmap, _i32, _i32)),
    "bmp_clear": (None, (_bitmap, _u32)),
    "bmp_copy": (None, (_bitmap, _bitmap, _u32)),
    "bmp_blt": (None, (_bitmap, _i32, _i32, _i32, _i32, _bitmap, _i32, _i32, _u32)),
    "bmp_interporate": (None, (_bitmap, _bitmap, _u32)),
    "bmp_draw_rect": (None, (_bitmap, _i32, _i32, _i32, _i32, _u32, _u32)),
    "bmp_draw_line": (None, (_bitmap, _i32, _i32, _i32, _i32, _u32, _u32)),
    "bmp_translate_color": (_u32, (_pointer, _u32)),
    "bmp_set_palette": (None, (_bitmap, _i32, _u32)),
    "bmp_display": (_i32, (_handle, _i32, _i32, _i32, _i32, _bitmap, _i32, _i32)),
    "bmp_compose": (_i32, (_bitmap, _bitmap, _bitmap, _pointer, _u32)),
    "bmp_compose_color": (_i32, (_bitmap, _bitmap, _bitmap, _bitmap, _bitmap, _u32, _u32)),
    "bmp_alpha_rect": (None, (_bitmap, _float, _float, _float, _float, _float, _float, _u32)),
    "bmp_alpha_circle": (None, (_bitmap, _float, _float, _float, _float, _float, _u32)),
    "bmp_map_polygon": (None, (_bitmap, _bitmap, _bitmap, _pointer, _pointer, _pointer, _i32, _u32)),
    "bmp_map_rect": (None, (_bitmap, _bitmap, _float, _float, _float, _float, _bitmap, _pointer, _float, _float,
                            _float, _float, _u32)),
}
# fmt: on


def decorated(name: str) -> str:
    """The name that 32-bit Windows exports: every argument is a word of 4 bytes there.

    >>> from zepbmp._library import decorated
    >>> decorated("bmp_clear")
    '_bmp_clear@8'
    """
    return f"_{name}@{4 * len(PROTOTYPES[name][1])}"


def _open_file(path: str) -> ctypes.CDLL:
    # Both kinds release Python's lock during a call.
    kind: type[ctypes.CDLL] = getattr(ctypes, "WinDLL", ctypes.CDLL)
    try:
        return kind(path)
    except OSError as error:
        raise ImportError(f"the zepbmp library does not load: {error}", path=path) from error


def _open() -> ctypes.CDLL:
    named = os.environ.get(VARIABLE)
    if named and named != SYSTEM:
        return _open_file(os.path.abspath(named))
    bundled = Path(__file__).with_name(BUNDLED_NAME)
    if not named and bundled.exists():
        return _open_file(str(bundled))
    reasons = []
    for name in _SYSTEM_NAMES:
        try:
            return _open_file(name)
        except ImportError as error:
            reasons.append(str(error.__cause__))
    raise ImportError(
        f"found no zepbmp library: this package was built without one, and {'; '.join(reasons)}. "
        f"Install the library, or name its file in the environment variable {VARIABLE}"
    )


def _functions(library: ctypes.CDLL) -> dict[str, Any]:
    windows32 = sys.platform == "win32" and ctypes.sizeof(c_void_p) == 4
    functions = {}
    for name, (result, arguments) in PROTOTYPES.items():
        try:
            function = library[decorated(name) if windows32 else name]
        except AttributeError as error:
            raise ImportError(f"{library._name} is no zepbmp library: it has no {name}", path=library._name) from error
        function.restype = result
        function.argtypes = arguments
        functions[name] = function
    return functions


_library = _open()
PATH: Final[str] = _library._name
call: Final[dict[str, Any]] = _functions(_library)
