"""Random bitmaps for Hypothesis: small, with the sizes around vector lengths and odd ones, and with extreme bytes."""

from typing import Any

import numpy as np
from hypothesis import strategies as st

import zepbmp
from zepbmp import Bitmap, Format

sizes = st.tuples(st.integers(1, 40), st.integers(1, 6))
fields = st.sampled_from(list(zepbmp.Field))
starts = st.integers(0, 2**32 - 1)
colored = st.sampled_from([Format.YUY2, Format.RGBQ])

_NASTY = np.array([0, 1, 127, 128, 254, 255], np.uint8)
_NASTY_WEIGHTS = np.array([0, 1, 2048, 4095, 4096], np.uint16)


def filled(width: int, height: int, format: Format, random: np.random.Generator, **how: Any) -> Bitmap:
    bitmap = Bitmap(width, height, format, **how)
    values = bitmap.array
    if format is Format.PWRW:
        nasty, top = _NASTY_WEIGHTS, 4097
    else:
        nasty, top = _NASTY, 129 if format is Format.A8 else 256
    random_values = random.integers(0, top, values.shape).astype(values.dtype)
    nasty_values = random.choice(nasty[nasty < top], values.shape)
    bitmap.copy_from(np.where(random.random(values.shape) < 0.5, random_values, nasty_values))
    return bitmap
