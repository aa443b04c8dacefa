"""A wipe for interlaced video: each field is drawn for its own moment, so that the edge moves at twice the frame rate."""
import zepbmp
from pictures import day, new, night, run


def fields():
    weights, frame = new(zepbmp.Format.PWRW), new(zepbmp.Format.RGBQ)
    before, after = day(), night()
    x = 60
    for field in (zepbmp.Field.EVEN, zepbmp.Field.ODD):
        zepbmp.alpha_rect(weights, x, 30.5, 180, 120, field=field)
        zepbmp.compose(frame, before, after, weights, field)
        x += 12  # half a frame later
    return frame


run(fields)
