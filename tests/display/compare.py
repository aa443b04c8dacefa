"""Comparison of two pictures, pixel by pixel."""


def differences(got, want):
    """What differs, in words; empty where every pixel is the same."""
    if got.size != want.size:
        return "the picture is {} x {} pixels, not {} x {}".format(*got.size, *want.size)
    if got.tobytes() == want.tobytes():
        return ""
    pairs = zip(got.getdata(), want.getdata())
    wrong = [(i, a, b) for i, (a, b) in enumerate(pairs) if a != b]
    i, a, b = wrong[0]
    y, x = divmod(i, want.width)
    return f"{len(wrong)} of {want.width * want.height} pixels differ, first ({x}, {y}): red, green, blue {a}, not {b}"
