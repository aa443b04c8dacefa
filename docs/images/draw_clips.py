#!/usr/bin/python3
"""Draws two short clips of made-up landscapes, dusk.y4m and sea.y4m, into the folder given."""

import sys
from pathlib import Path

import numpy as np

WIDTH, HEIGHT, RATE, SECONDS = 640, 360, 25, 4
X, Y = np.meshgrid(np.arange(WIDTH) + 0.5, np.arange(HEIGHT) + 0.5)


def rgb(code):
    return np.array([int(code[i:i + 2], 16) for i in (0, 2, 4)], dtype=float)


def gradient(stops):
    """A picture that runs down through (height, colour) stops."""
    heights, colours = zip(*stops)
    table = np.array([rgb(c) for c in colours])
    line = (np.arange(HEIGHT) + 0.5) / HEIGHT
    channels = [np.interp(line, heights, table[:, k]) for k in range(3)]
    return np.repeat(np.stack(channels, axis=-1)[:, None, :], WIDTH, axis=1)


def paint(picture, cover, colour):
    """Lays a colour over a picture where cover (0..1) says."""
    picture += np.clip(cover, 0, 1)[..., None] * (rgb(colour) - picture)


def below(curve):
    """Cover of everything under a curve y(x), with a smooth edge."""
    return Y - curve + 0.5


def disc(cx, cy, radius):
    return radius - np.hypot(X - cx, Y - cy) + 0.5


def dusk(second):
    picture = gradient([(0, "1b1742"), (0.35, "5d2a6b"), (0.6, "d3565f"), (0.75, "f9a24b"), (1, "ffd98a")])
    sun_y = 205 + 6 * second
    paint(picture, 0.55 * np.exp(-np.hypot(X - 430, Y - sun_y) / 75), "ffd27a")
    paint(picture, disc(430, sun_y, 38), "fff0c2")
    for depth, (base, height, colour) in enumerate([(235, 34, "8c3b5e"), (275, 30, "55295a"), (318, 26, "241a40")]):
        at = X / (150 - 38 * depth) + second * 0.15 * (depth + 1) + 2.1 * depth
        ridge = np.sin(at) + 0.45 * np.sin(2.3 * at + 1) + 0.2 * np.sin(5.1 * at)
        paint(picture, below(base - height * ridge), colour)
    return picture


def sea(second):
    picture = gradient([(0, "3d8fd6"), (0.5, "bfe3f2"), (0.56, "e9f5f2"), (0.5601, "2f86a6"), (1, "0b3f63")])
    for cx, cy, size in [(120, 70, 1.0), (330, 48, 0.7), (520, 105, 1.2)]:
        cx += 9 * second * size
        for dx, dy, radius in [(0, 0, 26), (-30, 8, 18), (31, 7, 20), (-8, -13, 18), (14, -10, 16)]:
            far = np.hypot(X - cx - dx * size, (Y - cy - dy * size) * 1.3) / (radius * size)
            paint(picture, 0.9 * np.exp(-far ** 4), "ffffff")
    horizon = 0.56 * HEIGHT
    near = np.clip((Y - horizon) / (HEIGHT - horizon), 0, 1)
    ripple = np.sin(Y * Y / 260 + 2.2 * second) * np.sin(X / (14 + 50 * near) + 0.9 * np.sin(Y / 7) + second)
    paint(picture, (near > 0) * (0.1 + 0.3 * near) * np.clip(ripple - 0.25, 0, 1), "e8fbff")
    boat_x, boat_y = 296 + 16 * second, 262 + 2 * np.sin(2 * second)
    rise = boat_y - 8 - Y
    paint(picture, np.minimum.reduce([X - boat_x, 58 - 0.62 * rise - (X - boat_x), rise, 92 - rise]), "fdf6e6")
    paint(picture, np.minimum.reduce([boat_x - 5 - X, 34 - 0.5 * rise - (boat_x - 5 - X), rise, 70 - rise]), "f06b4f")
    hull = Y - boat_y + 6
    paint(picture, np.minimum.reduce([X - boat_x + 52 - hull, 66 - hull - X + boat_x, hull, 18 - hull]), "5a2d22")
    return picture


def planes(picture):
    """Full-colour Y, Cb, Cr in studio range."""
    red, green, blue = (picture[..., k] / 255 for k in range(3))
    luma = 0.299 * red + 0.587 * green + 0.114 * blue
    for plane in (16 + 219 * luma, 128 + 224 * (blue - luma) / 1.772, 128 + 224 * (red - luma) / 1.402):
        yield np.rint(plane).astype(np.uint8).tobytes()


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: draw_clips.py FOLDER")
    for draw in (dusk, sea):
        with open(Path(sys.argv[1]) / (draw.__name__ + ".y4m"), "wb") as file:
            file.write(b"YUV4MPEG2 W%d H%d F%d:1 Ip A1:1 C444\n" % (WIDTH, HEIGHT, RATE))
            for frame in range(RATE * SECONDS):
                file.write(b"FRAME\n")
                for plane in planes(draw(frame / RATE)):
                    file.write(plane)


if __name__ == "__main__":
    main()
