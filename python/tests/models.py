"""What the operations compute, as plain NumPy: the formulas of docs/rounding.md for processor levels 1 to 4."""

from collections.abc import Callable
from typing import Any

import numpy as np
import numpy.typing as npt

import zepbmp

Array = npt.NDArray[Any]


def lines_of(height: int, field: zepbmp.Field) -> slice:
    return {
        zepbmp.Field.FRAME: slice(0, height),
        zepbmp.Field.SKIP_FIRST: slice(1, height),
        zepbmp.Field.EVEN: slice(0, height, 2),
        zepbmp.Field.ODD: slice(1, height, 2),
    }[field]


def signed16(weights: Array) -> Array:
    return weights.astype(np.int64).astype(np.uint16).view(np.int16).astype(np.int64)


def saturated(values: Array) -> Array:
    return np.clip(values, 0, 255).astype(np.uint8)


def bytes_under(mask: Array, pixels: Array, format: zepbmp.Format) -> Array:
    """The weight of every byte: in YUY2 chroma takes that of its pair's first pixel."""
    weights = np.repeat(mask[: pixels.shape[0], : pixels.shape[1], None], pixels.shape[2], axis=2)
    if format is zepbmp.Format.YUY2:
        weights[:, 1::2, 1] = weights[:, : weights.shape[1] // 2 * 2 : 2, 1]
    return weights.astype(np.int64)


def mix_weights(p: Array, q: Array, mask: Array, format: zepbmp.Format) -> Array:
    w = bytes_under(mask, p, format)
    p, q = p.astype(np.int64), q.astype(np.int64)
    return saturated((p * signed16(4096 - w) >> 12) + (q * signed16(w) >> 12))


def mix_masks(p: Array, q: Array, mask: Array, format: zepbmp.Format) -> Array:
    w = bytes_under(mask, p, format)
    p, q = p.astype(np.int64), q.astype(np.int64)
    return saturated(((p * ((128 - w) & 255) + q * w) & 0xFFFF) >> 7)


def mix_level(p: Array, q: Array, level: int) -> Array:
    p, q = p.astype(np.int64), q.astype(np.int64)
    return ((((p * (4096 - level)) >> 10) + ((q * level) >> 10) + 2) >> 2).astype(np.uint8)


def color_bytes(color: int, shape: tuple[int, ...], format: zepbmp.Format) -> Array:
    """The colour's byte for every byte of the picture."""
    flat = np.zeros(shape, np.int64)
    if format is zepbmp.Format.RGBQ:
        flat[:] = [color >> 8 * k & 255 for k in range(4)]
    else:
        flat[:, :, 0] = color >> 16 & 255
        flat[:, 0::2, 1] = color >> 8 & 255
        flat[:, 1::2, 1] = color & 255
    return flat


def _pair_sums(mask: Array) -> Array:
    even = mask.shape[1] // 2 * 2
    sums = mask[:, 0:even:2] + mask[:, 1:even:2]
    return np.repeat(sums, 2, axis=1)


def _luma_and_chroma(p: Array, luma: Callable[[], Array], chroma: Callable[[], Array]) -> Array:
    """Of a YUY2 picture with whole pairs only."""
    out = np.empty_like(p)
    out[:, :, 0] = luma()
    out[:, :, 1] = chroma()
    return saturated(out)


def mix_color(before: Array, p: Array, mask: Array, color: int, format: zepbmp.Format) -> Array:
    """The one-source mix. The fourth byte of RGBQ stays; the last odd pixel of a YUY2 line is no part of it."""
    w = mask[: p.shape[0], : p.shape[1]].astype(np.int64)
    if format is zepbmp.Format.RGBQ:
        c = color_bytes(color, p.shape, format)
        sums = p.astype(np.int64) * w[:, :, None] + c * (4096 - w[:, :, None])
        mixed = (np.sign(sums) * (np.abs(sums) // 4096)).astype(np.uint8)
        mixed[:, :, 3] = before[:, :, 3]
        return mixed
    even = p.shape[1] // 2 * 2
    p, w = p[:, :even].astype(np.int64), w[:, :even]
    c, pair = color_bytes(color, p.shape, format), _pair_sums(w)
    return _luma_and_chroma(
        p,
        lambda: ((p[:, :, 0] * w >> 11) + (c[:, :, 0] * (4096 - w) >> 11) + 1) >> 1,
        lambda: ((p[:, :, 1] * pair >> 12) + (c[:, :, 1] * (8192 - pair) >> 12) + 1) >> 1,
    )


def mix_band(p: Array, q: Array, a: Array, b: Array, color: int, format: zepbmp.Format) -> Array:
    a, b = (mask[: p.shape[0], : p.shape[1]].astype(np.int64) for mask in (a, b))
    if format is zepbmp.Format.RGBQ:
        p, q, c = p.astype(np.int64), q.astype(np.int64), color_bytes(color, p.shape, format)
        a, b = a[:, :, None], b[:, :, None]
        return saturated((p * (4096 - b) >> 12) + (q * a >> 12) + (c * (b - a) >> 12))
    even = p.shape[1] // 2 * 2
    p, q, a, b = p[:, :even].astype(np.int64), q[:, :even].astype(np.int64), a[:, :even], b[:, :even]
    c, pair_a, pair_b = color_bytes(color, p.shape, format), _pair_sums(a), _pair_sums(b)
    p0, q0, c0, p1, q1, c1 = p[:, :, 0], q[:, :, 0], c[:, :, 0], p[:, :, 1], q[:, :, 1], c[:, :, 1]
    return _luma_and_chroma(
        p,
        lambda: ((p0 * (4096 - b) >> 11) + (q0 * a >> 11) + (c0 * (b - a) >> 11) + 1) >> 1,
        lambda: ((p1 * (8192 - pair_b) >> 12) + (q1 * pair_a >> 12) + (c1 * (pair_b - pair_a) >> 12) + 1) >> 1,
    )


def interpolated(source: Array, field: zepbmp.Field) -> Array:
    first = 1 if field is zepbmp.Field.ODD else 0
    height = len(source)
    if first >= height:
        return source.copy()
    last = first + (height - 1 - first) // 2 * 2
    y = np.arange(height)
    other = (y - first) % 2 == 1
    above = np.clip(np.where(other, y - 1, y), first, last)
    below = np.clip(np.where(other, y + 1, y), first, last)
    bytes_above, bytes_below = (source[at].view(np.uint8).astype(np.int64) for at in (above, below))
    return ((bytes_above + bytes_below + 1) >> 1).astype(np.uint8).view(source.dtype)


def hard_circle(width: int, height: int, cx: float, cy: float, radius: float, aspect: float) -> Array:
    """256 for each of 4 x 4 samples of a pixel that lies inside, the pixels that a chord decides on their own."""
    cx, cy, radius, aspect = (float(np.float32(value)) for value in (cx, cy, radius, aspect))
    samples = (np.arange(4) + 0.5) / 4
    weights = np.zeros((height, width), np.uint16)
    for y in range(height):
        top = y * aspect - cy
        nearer, farther = (top, top + aspect) if y >= int(cy / aspect) else (-top - aspect, -top)
        touched = _chord(cx, radius, nearer, 0.0, 0.99999, width)
        covered = _chord(cx, radius, farther, 0.99999, 0.0, width)
        dx = np.arange(width)[:, None] - cx + samples
        reach = radius * radius - (top + aspect * samples) ** 2
        line = 256 * (dx[:, :, None] ** 2 <= reach).sum(axis=(1, 2))
        x = np.arange(width)
        line[(x < touched[0]) | (x >= touched[1])] = 0
        line[(x >= covered[0]) & (x < covered[1])] = 4096
        weights[y] = line
    return weights


def _chord(cx: float, radius: float, e: float, left: float, right: float, width: int) -> tuple[int, int]:
    if not -radius <= e < radius:  # the chord is empty
        return 0, 0
    half = float(np.sqrt(radius * radius - e * e))
    return int(cx - half + left), int(cx + half + right)


def box(width: int, height: int, x: float, y: float, across: float, down: float) -> Array:
    """Coverage of a rectangle whose numbers are whole 64ths, and which has no two edges in one pixel or line."""
    columns, rows = np.arange(width), np.arange(height)
    part_x = np.clip(np.minimum(columns + 1, x + across) - np.maximum(columns, x), 0, 1)
    part_y = np.clip(np.minimum(rows + 1, y + down) - np.maximum(rows, y), 0, 1)
    weights: Array = (part_y[:, None] * part_x * 4096).astype(np.uint16)
    return weights
