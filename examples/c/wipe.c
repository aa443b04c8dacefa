/* One frame of a wipe: the night in a round hole of the day, with a soft edge. */
#include "pictures.h"

int main(int argc, char** argv) {
    const char* path = path_argument(argc, argv);
    Bitmap *day = new_day(), *night = new_night();
    Bitmap* weights = new_bitmap(kWidth, kHeight, BMP_FMT_PWRW, 0);
    Bitmap* frame = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, 0);

    /* A disc of radius 80 whose outer 30 pixels fade; around it the weight becomes 0. */
    bmp_alpha_circle(weights, kWidth / 2, kHeight / 2, 80, 30, 1, BMP_SHAPE_COSINE);
    bmp_compose(frame, day, night, weights, 0);
    save(frame, path);

    bmp_destroy(frame);
    bmp_destroy(weights);
    bmp_destroy(night);
    bmp_destroy(day);
    return 0;
}
