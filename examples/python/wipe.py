"""One frame of a wipe: the night in a round hole of the day, with a soft edge."""
import zepbmp
from pictures import HEIGHT, WIDTH, day, new, night, run


def wipe():
    weights, frame = new(zepbmp.Format.PWRW), new(zepbmp.Format.RGBQ)
    # A disc of radius 80 whose outer 30 pixels fade; around it the weight becomes 0.
    zepbmp.alpha_circle(weights, WIDTH / 2, HEIGHT / 2, radius=80, feather=30, ramp=zepbmp.Ramp.COSINE)
    zepbmp.compose(frame, day(), night(), weights)
    return frame


run(wipe)
