// A picture in a picture: the day stands in the night like a screen that is turned away on its right.
#include "pictures.hpp"

static void picture_in_picture(const char* path) {
    zepbmp::Bitmap frame = night();

    // The right side is farther away: its w, 1 / distance, is smaller.
    const zepbmp::Vertex corners[] = {{.u = 0, .v = 0, .w = 1, .x = 40.5f, .y = 20.25f},
                                      {.u = kWidth, .v = 0, .w = 0.6f, .x = 250.75f, .y = 52},
                                      {.u = kWidth, .v = kHeight, .w = 0.6f, .x = 250.75f, .y = 128},
                                      {.u = 0, .v = kHeight, .w = 1, .x = 40.5f, .y = 159.75f}};
    zepbmp::map_polygon(frame, day(), corners, {.sampling = zepbmp::Sampling::filtered_antialiased});
    save(frame, path);
}

int main(int argc, char** argv) { return run(argc, argv, picture_in_picture); }
