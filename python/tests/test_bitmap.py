"""Bitmaps: views share memory and keep it, copies go in and out, memory comes back."""

import copy
import gc
import os
import pickle
import subprocess
import sys
import weakref
from pathlib import Path

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import zepbmp
from zepbmp import Bitmap, Field, Format, _bitmap, _library

FORMATS = [
    (Format.YUY2, np.uint8, (2,)),
    (Format.RGBQ, np.uint8, (4,)),
    (Format.PWRW, np.uint16, ()),
    (Format.QUAD3, np.uint8, (4,)),
    (Format.QUAD4, np.uint8, (4,)),
    (Format.QUAD5, np.uint8, (4,)),
    (Format.RGB8, np.uint8, ()),
    (Format.A8, np.uint8, ()),
]


@pytest.mark.parametrize("format, dtype, pixel", FORMATS)
def test_the_view_has_the_formats_shape_and_type(format, dtype, pixel):
    bitmap = Bitmap(21, 5, format)
    assert bitmap.array.dtype == dtype and bitmap.array.shape == (5, 21, *pixel)
    assert bitmap.array.strides[:2] == (bitmap.pitch, format.bytes_per_pixel)
    assert bitmap.array.ctypes.data == bitmap.pointer() and bitmap.pointer() % 16 == 0
    assert not bitmap.array.any()


@pytest.mark.parametrize("format, dtype, pixel", FORMATS)
def test_the_record_is_what_the_attributes_say(format, dtype, pixel):
    for interlace, number in ((Field.FRAME, 0), (Field.EVEN, 1), (Field.ODD, 2)):
        bitmap = Bitmap(21, 5, format, interlace)
        record = _library.Record.from_address(bitmap._address)
        assert (record.width, record.height, record.pitch) == (bitmap.width, bitmap.height, bitmap.pitch)
        assert (record.format, record.create_flags, record.interlace) == (bitmap.format, bitmap.interlace, number)
        assert record.bytes_per_pixel == bitmap.format.bytes_per_pixel == record.bit_count // 8


@pytest.mark.parametrize("width, height", [(0, 0), (0, 3), (3, 0)])
@pytest.mark.parametrize("format, dtype, pixel", FORMATS)
def test_a_bitmap_may_be_empty(width, height, format, dtype, pixel):
    bitmap = Bitmap(width, height, format)
    assert bitmap.array.shape == (height, width, *pixel)
    zepbmp.clear(bitmap)
    bitmap.copy_from(bitmap.to_array())


def test_views_share_memory_with_each_other_and_with_the_library():
    bitmap = Bitmap(4, 2, Format.PWRW)
    view = bitmap.array
    bitmap.array[1, 2] = 7
    assert view[1, 2] == 7
    zepbmp.draw_rect(bitmap, 0, 0, 1, 1, 9)
    assert view[0, 0] == 9
    assert np.shares_memory(view, np.asarray(bitmap))


def test_a_view_keeps_the_bitmap_alive():
    for make in (lambda one: one.array, lambda one: one.array[1:, ::2], lambda one: one.depth, np.asarray):
        bitmap = Bitmap(256, 256, Format.QUAD3)
        bitmap.array[:] = 77
        alive = weakref.ref(bitmap)
        view = make(bitmap)
        del bitmap
        gc.collect()
        others = [Bitmap(256, 256, Format.QUAD3) for _ in range(8)]  # would take the memory if it were free
        assert alive() is not None
        assert (view.view(np.uint8) == 77).all()
        del view
        gc.collect()
        assert alive() is None
        del others


def test_memory_comes_back():
    def resident_bytes():
        with open("/proc/self/statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * 4096

    before = resident_bytes()
    for _ in range(128):
        bitmap = Bitmap(2048, 2048, Format.QUAD3, zero=False)
        bitmap.array[:] = 1
        view = bitmap.depth
    del bitmap, view
    # AddressSanitizer holds 256 MB back.
    assert resident_bytes() - before < 2**29, "2 GB were filled"


def freed_addresses(monkeypatch):
    """Instead of bmp_destroy's work, a list of what it was asked to free."""
    freed = []
    monkeypatch.setattr(_bitmap._Memory, "__del__", lambda self: freed.append(self.address))
    return freed


def test_the_library_frees_each_bitmap_once(monkeypatch):
    freed = freed_addresses(monkeypatch)
    bitmap = Bitmap(4, 4, Format.A8)
    address = bitmap._address
    bitmap.__init__(8, 8, Format.A8)  # nothing: the bitmap stays as it is
    views = [bitmap.array, bitmap.array]
    del bitmap
    assert freed == []
    del views
    assert freed == [address]
    _library.call["bmp_destroy"](address)


def test_a_subclass_with_a_finaliser_is_freed_once(monkeypatch):
    freed, kept = freed_addresses(monkeypatch), []

    class Kept(Bitmap):
        def __del__(self):
            kept.append(self)

    bitmap = Kept(4, 4, Format.A8)
    address = bitmap._address
    bitmap.__del__()
    kept.clear()
    del bitmap  # lives on in the list
    zepbmp.clear(kept[0])
    assert freed == []
    kept.clear()
    assert freed == [address]
    _library.call["bmp_destroy"](address)


def test_the_interpreter_ends_with_bitmaps_in_use():
    program = """
import builtins, sys, threading, time
import zepbmp
from zepbmp import Bitmap, Format

class Holder:
    def __del__(self):
        self.bitmap.array[:] = 1
        zepbmp.clear(self.bitmap)

cycle = Holder()
cycle.cycle, cycle.bitmap = cycle, Bitmap(64, 64, Format.A8)
builtins.kept, sys.kept, zepbmp.kept = (Bitmap(8, 8, Format.A8) for _ in range(3))
sys.view = Bitmap(8, 8, Format.A8).array
dest, source = Bitmap(1500, 1500, Format.RGBQ), Bitmap(8, 8, Format.RGBQ)

def draw_on():
    while True:
        zepbmp.map_polygon(dest, source, [(0, 0, 1, 0, 0), (8, 0, 2, 1500, 0), (8, 8, 3, 1500, 1500)])

threading.Thread(target=draw_on, daemon=True).start()
time.sleep(0.1)
"""
    environment = {**os.environ, "PYTHONPATH": str(Path(zepbmp.__file__).parents[1])}
    done = subprocess.run([sys.executable, "-c", program], env=environment, capture_output=True, text=True, check=False)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")


def test_no_memory():
    with pytest.raises(MemoryError, match="no memory for a bitmap of 2147483632 x 2147483647 A8"):
        Bitmap(2**31 - 16, 2**31 - 1, Format.A8)


@given(st.sampled_from(FORMATS), st.integers(1, 30), st.integers(1, 6), st.integers(0, 2**32 - 1))
def test_foreign_arrays_go_in_and_out(how, width, height, seed):
    format, dtype, pixel = how
    random = np.random.default_rng(seed)
    page = random.integers(0, 256, (3 * height, 2 * width, *pixel)).astype(dtype)
    foreign = page[::-3, 1::2]
    bitmap = Bitmap.from_array(foreign, format)
    np.testing.assert_array_equal(bitmap.array, foreign)
    np.testing.assert_array_equal(bitmap.to_array(), foreign)
    assert bitmap.to_array().flags.c_contiguous and not np.shares_memory(bitmap.to_array(), bitmap.array)

    out = page.copy()
    bitmap.copy_to(out[::-3, ::2])
    np.testing.assert_array_equal(out[::-3, ::2], foreign)
    np.testing.assert_array_equal(out[:, 1::2], page[:, 1::2])

    other = Bitmap(width, height, format)
    other.copy_from(bitmap)
    np.testing.assert_array_equal(other.array, foreign)


@pytest.mark.parametrize("duplicate", [copy.copy, copy.deepcopy, lambda one: pickle.loads(pickle.dumps(one))])
def test_duplicates_have_memory_of_their_own(duplicate):
    bitmap = Bitmap.from_array(np.arange(15, dtype=np.uint8).reshape(3, 5), Format.A8, Field.ODD)
    other = duplicate(bitmap)
    np.testing.assert_array_equal(other.array, bitmap.array)
    assert (other.format, other.interlace) == (bitmap.format, bitmap.interlace)
    assert other.pointer() != bitmap.pointer()


@pytest.mark.parametrize("order", "<>=")
def test_arrays_of_either_byte_order_go_in_and_out(order):
    foreign = np.arange(12).reshape(3, 4).astype(f"{order}u2")
    bitmap = Bitmap.from_array(foreign[:, ::-1], Format.PWRW)
    np.testing.assert_array_equal(bitmap.array, foreign[:, ::-1])
    bitmap.copy_to(foreign)
    np.testing.assert_array_equal(bitmap.array, foreign)
    bitmap.copy_from(foreign[::-1])
    np.testing.assert_array_equal(bitmap.array, foreign[::-1])


@pytest.mark.parametrize("turned", [np.s_[::-1], np.s_[:, ::-1], np.s_[::-1, ::-1]])
def test_views_of_a_bitmap_go_into_it_and_out_of_it(turned):
    pixels = np.arange(45, dtype=np.uint8).reshape(5, 9)
    bitmap = Bitmap.from_array(pixels, Format.A8)
    bitmap.copy_from(bitmap.array[turned])
    np.testing.assert_array_equal(bitmap.array, pixels[turned])
    bitmap.copy_to(bitmap.array[turned])
    np.testing.assert_array_equal(bitmap.array, pixels)


class Named(Bitmap):
    """A subclass with an attribute of its own."""


@pytest.mark.parametrize("duplicate", [copy.copy, copy.deepcopy, lambda one: pickle.loads(pickle.dumps(one))])
def test_a_duplicate_is_of_the_same_class(duplicate):
    named = Named.from_array(np.ones((2, 3), np.uint8), Format.A8)
    named.name = "first"
    other = duplicate(named)
    assert type(other) is Named and other.name == "first" and other.array.all()


def test_attributes_are_read_only():
    bitmap = Bitmap(4, 2, Format.A8)
    for name in ("width", "height", "pitch", "format", "interlace", "array", "depth", "other"):
        with pytest.raises(AttributeError):
            setattr(bitmap, name, 1)


def test_the_palette_is_in_the_display_header():
    bitmap = Bitmap(4, 2, Format.RGB8)
    record = _library.Record.from_address(bitmap._address)
    assert not record.dib_info
    zepbmp.set_palette(bitmap, 3, 0x123456)
    header = (_library.ctypes.c_uint32 * (10 + 256)).from_address(record.dib_info)
    assert header[10 + 3] == 0x123456 and header[10 + 4] == 0x040404
