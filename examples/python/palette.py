"""Palette colours: a wheel of lines over rings, each pixel an index. Where zepbmp.display shows the bitmap, Windows looks
the colours up; here the example does."""
import numpy as np

import zepbmp
from pictures import HEIGHT, WIDTH, new, run


def palette():
    indices, frame = new(zepbmp.Format.RGB8), new(zepbmp.Format.RGBQ)
    up = np.arange(256)
    colors = np.stack((255 - up, up, up, 0 * up), axis=-1).astype(np.uint8)  # from blue to yellow
    for index, color in enumerate(colors.view("<u4").ravel().tolist()):
        zepbmp.set_palette(indices, index, color)

    y, x = np.mgrid[0:HEIGHT, 0:WIDTH]
    indices.array[:] = ((x - 160) ** 2 + (y - 90) ** 2) // 64 % 256
    for end in range(0, WIDTH, 20):
        zepbmp.draw_line(indices, 160, 90, end, 0, 0xFF, zepbmp.DrawMode.XOR)
    zepbmp.draw_rect(indices, 0, 150, WIDTH, HEIGHT, 0xC0, zepbmp.DrawMode.AND)

    frame.array[:] = colors[indices.array]
    return frame


run(palette)
