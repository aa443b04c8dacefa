"""What the examples share: pictures to work on, and files to look at."""
import sys

import numpy as np

import zepbmp

WIDTH, HEIGHT = 320, 180


def paint(color):
    """An RGBQ bitmap with a pattern of squares over what color(x, y) gives: red, green, blue."""
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH]
    light = (x // 16 + y // 16) % 2 * 16
    red, green, blue = color(x, y)
    pixels = np.stack(np.broadcast_arrays(blue + light, green + light, red + light, 0), axis=-1)
    return zepbmp.Bitmap.from_array(pixels.astype(np.uint8), zepbmp.Format.RGBQ)


def day():
    return paint(lambda x, y: (70 + x // 2, 120 + y // 2, 230 - y))


def night():
    return paint(lambda x, y: (10 + x // 8, 20, 40 + y // 4))


def new(format):
    return zepbmp.Bitmap(WIDTH, HEIGHT, format)


def save(bitmap, path):
    """Writes an RGBQ bitmap as a PPM image."""
    with open(path, "wb") as file:
        file.write(b"P6\n%d %d\n255\n" % (bitmap.width, bitmap.height))
        file.write(bitmap.array[:, :, 2::-1].tobytes())


def run(example):
    """Saves what the example draws in the file that is the program's argument."""
    if len(sys.argv) != 2:
        sys.exit("error: give the PPM file to write as the only argument")
    try:
        save(example(), sys.argv[1])
    except OSError as error:
        sys.exit(f"error: cannot write {sys.argv[1]}: {error.strerror}")
