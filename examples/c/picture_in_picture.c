/* A picture in a picture: the day stands in the night like a screen that is turned away on its right. */
#include "pictures.h"

int main(int argc, char** argv) {
    const char* path = path_argument(argc, argv);
    Bitmap *frame = new_night(), *inset = new_day();

    /* u, v: the inset's corner; w: 1 / distance, so the right side is farther away; x, y: where it goes. */
    const BmpVertex corners[4] = {{0, 0, 1, 40.5f, 20.25f},
                                  {kWidth, 0, 0.6f, 250.75f, 52},
                                  {kWidth, kHeight, 0.6f, 250.75f, 128},
                                  {0, kHeight, 1, 40.5f, 159.75f}};
    bmp_map_polygon(frame, NULL, NULL, inset, NULL, corners, 4, BMP_MAP_ANTIALIAS);
    save(frame, path);

    bmp_destroy(inset);
    bmp_destroy(frame);
    return 0;
}
