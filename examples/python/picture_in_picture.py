"""A picture in a picture: the day stands in the night like a screen that is turned away on its right."""
import zepbmp
from pictures import HEIGHT, WIDTH, day, night, run


def picture_in_picture():
    frame = night()
    # The right side is farther away: its w, 1 / distance, is smaller.
    corners = [
        zepbmp.Vertex(u=0, v=0, w=1, x=40.5, y=20.25),
        zepbmp.Vertex(u=WIDTH, v=0, w=0.6, x=250.75, y=52),
        zepbmp.Vertex(u=WIDTH, v=HEIGHT, w=0.6, x=250.75, y=128),
        zepbmp.Vertex(u=0, v=HEIGHT, w=1, x=40.5, y=159.75),
    ]
    zepbmp.map_polygon(frame, day(), corners, antialias=True)
    return frame


run(picture_in_picture)
