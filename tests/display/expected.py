"""The client area of the sample host's window (examples/c/show_win32.c), computed from docs/rounding.md pixel by pixel.

The formulas are those of processor levels 1 to 4.
"""
import math

from PIL import Image

WIDTH, HEIGHT, GAP = 160, 120, 16
WEIGHT_FULL = 4096


def day(x, y):
    return 80 + x, 120 + y, 255 - y


def night(x, y):
    return 10 + x // 4, 20, 30 + y


def chord(x, edge, radius, touched):
    """Whether the disc of that radius touches, or covers, column x of a line whose edge is that far from its centre."""
    if edge > radius:
        return False
    half = math.sqrt(radius * radius - edge * edge)
    left, right = (0, 0.99999) if touched else (0.99999, 0)
    return int(WIDTH / 2 - half + left) <= x < int(WIDTH / 2 + half + right)


def disc_weight(x, y, radius=52, feather=24):
    """A disc in the frame's centre. A pixel that lies whole in its linear ramp takes the weight of its own centre, one
    at an edge of the ramp the mean of 2 x 2 samples."""
    def sample(dx, dy):
        distance = math.sqrt(dx * dx + dy * dy)
        if distance <= radius - feather:
            return WEIGHT_FULL
        return 4 * int((radius - distance) * 1024 / feather + 0.5) if distance <= radius else 0

    dx, dy = x + 0.5 - WIDTH / 2, y + 0.5 - HEIGHT / 2
    if chord(x, abs(dy) + 0.5, radius, False) and not chord(x, abs(dy) - 0.5, radius - feather, True):
        return sample(dx, dy)
    return sum(sample(dx + i, dy + j) for i in (-0.25, 0.25) for j in (-0.25, 0.25)) // 4


def wipe(x, y):
    w = disc_weight(x, y)
    return tuple(p * (WEIGHT_FULL - w) // WEIGHT_FULL + q * w // WEIGHT_FULL for p, q in zip(day(x, y), night(x, y)))


def glow(x, y):
    i = ((x - WIDTH // 2) ** 2 + (y - HEIGHT // 2) ** 2) // 40
    return i, i * i // 255, 255 - i


def dissolve(x, y):
    level = 3072 if y % 2 else 1024
    return tuple((p * (WEIGHT_FULL - level) // 1024 + q * level // 1024 + 2) >> 2
                 for p, q in zip(day(x, y), night(x, y)))


def client_area():
    """The three frames side by side on black."""
    frames = (wipe, glow, dissolve)
    image = Image.new("RGB", (GAP + len(frames) * (WIDTH + GAP), GAP + HEIGHT + GAP))
    for i, frame in enumerate(frames):
        for y in range(HEIGHT):
            for x in range(WIDTH):
                image.putpixel((GAP + i * (WIDTH + GAP) + x, GAP + y), frame(x, y))
    return image
