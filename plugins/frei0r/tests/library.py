"""The effects drawn by the library itself: its Python package, with geometry worked out here.

Frames are arrays of (height, width, 4) bytes: red, green, blue, alpha. The library calls the same bytes blue, green, red and
a fourth one, and treats the colours alike.
"""

import math

import numpy as np
import zepbmp

FULL = zepbmp.WEIGHT_FULL
CORNERS = ("Top left", "Top right", "Bottom right", "Bottom left")


def bitmap(frame):
    return zepbmp.Bitmap.from_array(np.ascontiguousarray(frame), zepbmp.Format.RGBQ)


def blank(frame, format=zepbmp.Format.RGBQ):
    return zepbmp.Bitmap(frame.shape[1], frame.shape[0], format)


def packed(color):
    red, green, blue = (int(part * 255 + 0.5) for part in color)
    return red | green << 8 | blue << 16 | 255 << 24


def drawn_feather(part, unit):
    """Of a soft edge, in pixels: below one the edge is a hard one."""
    return part * unit if part * unit >= 1 else 0


def disc(frame, centre, radius, feather, cosine):
    weights = blank(frame, zepbmp.Format.PWRW)
    if radius > 0:
        ramp = zepbmp.Ramp.COSINE if cosine else zepbmp.Ramp.LINEAR
        zepbmp.alpha_circle(weights, centre[0], centre[1], radius=radius, feather=feather, ramp=ramp)
    return weights


def rounded_alpha(out, first, second, inner, outer):
    a, b = inner.array.astype(np.int64), outer.array.astype(np.int64)
    shares = first[..., 3] * (FULL - b) + second[..., 3] * a + 255 * (b - a)
    result = out.to_array()
    result[..., 3] = (shares + FULL // 2) // FULL
    return result


def dissolve(first, second, progress):
    out = blank(first)
    zepbmp.compose_level(out, bitmap(first), bitmap(second), math.floor(progress * FULL + 0.5))
    return out.to_array()


def fly(first, second, progress):
    if progress <= 0 or progress >= 1:
        return first if progress <= 0 else second
    height, width = first.shape[:2]
    rest = 1 - progress
    yaw, pitch = -0.9 * rest, -0.4 * rest
    eye = max(width, height / 4)
    unit = min(width, height) * rest / progress
    corners = []
    for u, v in ((0, 0), (width, 0), (width, height), (0, height)):
        x, y = u - width / 2, v - height / 2
        z = y * math.sin(pitch)
        across = -0.35 * unit + x * math.cos(yaw) - z * math.sin(yaw)
        down = -0.2 * unit * rest + y * math.cos(pitch)
        away = eye / progress - eye + x * math.sin(yaw) + z * math.cos(yaw)
        near = eye / (eye + away)
        corners.append((u, v, near, width / 2 + near * across, height / 2 + near * down))
    out = bitmap(first)
    zepbmp.map_polygon(out, bitmap(second), corners, antialias=True)
    return out.to_array()


def box_weights(frame, centre, half, radius, feather, cosine):
    """A soft box, pixel by pixel; rounded corners come from a disc for each."""
    height, width = frame.shape[:2]
    weights = blank(frame, zepbmp.Format.PWRW)
    if feather == 0:
        low = [math.floor((centre[i] - half[i]) * 64 + 0.5) / 64 for i in (0, 1)]
        high = [math.floor((centre[i] + half[i]) * 64 + 0.5) / 64 for i in (0, 1)]
        if radius > 0:
            zepbmp.alpha_rect(weights, *low, high[0] - low[0], high[1] - low[1], radius=(radius, radius))
        else:
            zepbmp.alpha_rect(weights, *low, high[0] - low[0], high[1] - low[1], mode=zepbmp.ShapeMode.MAX)
        return weights
    inside_x = half[0] - np.abs(np.arange(width) + 0.5 - centre[0])
    inside_y = half[1] - np.abs(np.arange(height) + 0.5 - centre[1])
    inside = np.minimum(inside_x[None, :], inside_y[:, None])
    step = np.clip(np.trunc(inside * (1024 / feather) + 0.5), 0, 1024)
    weights.array[:] = np.rint(2048 * (1 - np.cos(np.pi * step / 1024))) if cosine else 4 * step
    if radius > 0:
        r = min(max(radius, feather), *half)
        for right in (False, True):
            for bottom in (False, True):
                x = centre[0] + (half[0] - r if right else -(half[0] - r))
                y = centre[1] + (half[1] - r if bottom else -(half[1] - r))
                columns = quarter(width, x, r, right)
                lines = quarter(height, y, r, bottom)
                if len(columns) and len(lines):
                    part = np.zeros((len(lines), len(columns), 4), np.uint8)
                    corner = disc(part, (x - columns[0], y - lines[0]), r, feather, cosine)
                    weights.array[lines[0] : lines[-1] + 1, columns[0] : columns[-1] + 1] = corner.array
    return weights


def quarter(size, centre, radius, beyond):
    at = np.arange(size) + 0.5
    low, high = (centre, centre + radius) if beyond else (centre - radius, centre)
    return np.flatnonzero((at >= low) & (at < high))


def wipe(
    first,
    second,
    progress,
    shape="circle",
    centre=(0.5, 0.5),
    feather=0.1,
    cosine=False,
    corner_radius=0.5,
    band_width=0.1,
    band_color=(1, 1, 1),
):
    if progress <= 0 or progress >= 1:
        return first if progress <= 0 else second
    height, width = first.shape[:2]
    unit = min(width, height)
    x, y = centre[0] * width, centre[1] * height
    reach = (max(abs(x), abs(width - x)), max(abs(y), abs(height - y)))
    corner = math.sqrt(reach[0] ** 2 + reach[1] ** 2)
    feather = drawn_feather(feather, unit)
    out, a, b = blank(first), bitmap(first), bitmap(second)
    if shape == "band":
        band = band_width * unit
        radius = progress * (corner + feather + band)
        inner = disc(first, (x, y), radius - band, feather, cosine)
        outer = disc(first, (x, y), radius, feather, cosine)
        zepbmp.compose_color(out, a, inner, packed(band_color), src2=b, mask2=outer)
        return rounded_alpha(out, first, second, inner, outer)
    if shape == "circle":
        weights = disc(first, (x, y), progress * (corner + feather), feather, cosine)
    else:
        radius = corner_radius * min(reach) if shape == "rounded box" else 0
        beyond = feather + radius * (1 - math.sqrt(0.5))
        half = [progress * (part + beyond) for part in reach]
        weights = box_weights(first, (x, y), half, progress * radius, feather, cosine)
    zepbmp.compose(out, a, b, weights)
    return rounded_alpha(out, first, second, weights, weights)


def corner_pin(picture, corners, background=None):
    """`corners`: clockwise from the top left, in parts of the frame, and convex. Without a background: transparent."""
    height, width = picture.shape[:2]
    (x0, y0), (x1, y1), (x2, y2), (x3, y3) = points = [(x * width, y * height) for x, y in corners]
    # The map of the unit square onto the corners, whose denominator is 1 + g u + h v.
    matrix = [[x1 - x2, x3 - x2], [y1 - y2, y3 - y2]]
    g, h = np.linalg.solve(matrix, [x0 - x1 + x2 - x3, y0 - y1 + y2 - y3])
    texture = ((0, 0), (width, 0), (width, height), (0, height))
    distances = (1, 1 + g, 1 + g + h, 1 + h)
    vertices = [(u, v, 1 / z, x, y) for (u, v), z, (x, y) in zip(texture, distances, points)]
    out = blank(picture)
    if background is not None:
        out.array[:] = [*(packed(background) >> shift & 255 for shift in (0, 8, 16)), 255]
        zepbmp.map_polygon(out, bitmap(picture), vertices, antialias=True)
        return out.to_array()
    weights = blank(picture, zepbmp.Format.PWRW)
    zepbmp.map_polygon(out, bitmap(picture), vertices, antialias=True, coverage=weights)
    result = out.to_array()
    coverage = weights.array.astype(np.int64)[..., None]
    edge = (coverage[..., 0] > 0) & (coverage[..., 0] < FULL)
    # The middle one of the colours that the coverage makes the same byte of.
    byte, part = result[..., :3].astype(np.int64), np.maximum(coverage, 1)
    least, most = -(-byte * FULL // part), np.minimum(((byte + 1) * FULL - 1) // part, 255)
    result[..., :3][edge] = np.minimum((least + most + 1) // 2, 255)[edge]
    return result


def spotlight(picture, centre=(0.5, 0.5), radius=0.4, feather=0.15, darkness=0.7, color=(0, 0, 0), cosine=True):
    height, width = picture.shape[:2]
    unit = min(width, height)
    soft = drawn_feather(feather, unit)
    weights = disc(picture, (centre[0] * width, centre[1] * height), radius * unit, soft, cosine)
    dark = math.floor(darkness * FULL + 0.5)
    weights.array[:] = FULL - (FULL - weights.array.astype(np.int64)) * dark // FULL
    out = blank(picture)
    zepbmp.compose_color(out, bitmap(picture), weights, packed(color))
    result = out.to_array()
    result[..., 3] = picture[..., 3]
    return result


def interpolate(picture, lower=False):
    out = blank(picture)
    zepbmp.interpolate_field(out, bitmap(picture), zepbmp.Field.ODD if lower else zepbmp.Field.EVEN)
    return out.to_array()
