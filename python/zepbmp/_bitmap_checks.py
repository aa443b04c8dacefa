"""Checks of bitmaps and of what they have to agree in."""

from collections.abc import Container
from typing import Any

from zepbmp._bitmap import Bitmap
from zepbmp._checks import UINT32_MAX, bad_type, bad_value, integer, names_of
from zepbmp._types import Format


def bitmap(name: str, value: Any, formats: Container[Format] | None = None) -> Bitmap:
    if not isinstance(value, Bitmap):
        raise bad_type(name, value, "must be a zepbmp.Bitmap")
    if formats is not None and value._format not in formats:
        raise bad_value(name, value, f"its format must be {names_of(one for one in Format if one in formats)}")
    return value


def same_format(name: str, value: Bitmap, dest: Bitmap) -> None:
    if value._format is not dest._format:
        raise bad_value(name, value, f"must have the format of dest, {dest!r}")


def same_size(name: str, value: Bitmap, dest: Bitmap) -> None:
    if value._width != dest._width or value._height != dest._height:
        raise bad_value(name, value, f"must be as wide and high as dest, {dest!r}")


def covers(name: str, value: Bitmap, dest: Bitmap) -> None:
    if value._width < dest._width or value._height < dest._height:
        raise bad_value(name, value, f"must be at least as wide and high as dest, {dest!r}")


def dest_and_source(dest: Any, source: Any) -> None:
    """Two bitmaps with as many bytes a pixel."""
    bitmap("dest", dest)
    bitmap("source", source)
    if source._format.bytes_per_pixel != dest._format.bytes_per_pixel:
        raise bad_value("source", source, f"must have as many bytes a pixel as dest, {dest!r}")


def frame(name: str, value: Any, dest: Bitmap) -> None:
    """What is mixed into dest."""
    same_format(name, bitmap(name, value), dest)
    covers(name, value, dest)


def plane(name: str, value: Any, formats: Container[Format], dest: Bitmap) -> None:
    """A map that goes with dest."""
    covers(name, bitmap(name, value, formats), dest)


def distinct(**bitmaps: Bitmap | None) -> None:
    seen: dict[int, str] = {}
    for name, value in bitmaps.items():
        if value is not None and (other := seen.setdefault(id(value), name)) != name:
            raise bad_value(name, value, f"must be another bitmap than {other}")


def color_for(dest: Bitmap, value: Any) -> int:
    """A colour for an RGBQ bitmap, byte k in bits 8k..8k+7, or for a YUY2 bitmap, 0x00YYUUVV."""
    return integer("color", value, 0, UINT32_MAX if dest._format is Format.RGBQ else 0xFFFFFF)
