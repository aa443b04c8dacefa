"""Rebuilds a frame from one field: the even lines show the day, the odd ones, which came later, already the night."""
import zepbmp
from pictures import day, new, night, run


def deinterlace():
    interlaced, frame = day(), new(zepbmp.Format.RGBQ)
    zepbmp.copy(interlaced, night(), zepbmp.Field.ODD)
    zepbmp.interpolate_field(frame, interlaced, zepbmp.Field.EVEN)
    return frame


run(deinterlace)
