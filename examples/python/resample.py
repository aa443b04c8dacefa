"""The day, resampled to a place between the pixels, over the night: at its borders the night shines through."""
import zepbmp
from pictures import HEIGHT, WIDTH, day, new, night, run


def resample():
    small, coverage, frame = new(zepbmp.Format.RGBQ), new(zepbmp.Format.PWRW), new(zepbmp.Format.RGBQ)
    zepbmp.map_rect(small, (100.5, 50.25, 229, 122.5), day(), (0, 0, WIDTH, HEIGHT), coverage)
    zepbmp.compose(frame, night(), small, coverage)
    return frame


run(resample)
