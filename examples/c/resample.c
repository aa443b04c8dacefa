/* The day, resampled to a place between the pixels, over the night: at its borders the night shines through. */
#include "pictures.h"

int main(int argc, char** argv) {
    const char* path = path_argument(argc, argv);
    Bitmap *day = new_day(), *night = new_night();
    Bitmap* small = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, BMP_CREATE_ZERO);
    Bitmap* coverage = new_bitmap(kWidth, kHeight, BMP_FMT_PWRW, BMP_CREATE_ZERO);
    Bitmap* frame = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, 0);

    bmp_map_rect(small, coverage, 100.5f, 50.25f, 229, 122.5f, day, NULL, 0, 0, kWidth, kHeight, 0);
    bmp_compose(frame, night, small, coverage, 0);
    save(frame, path);

    bmp_destroy(frame);
    bmp_destroy(coverage);
    bmp_destroy(small);
    bmp_destroy(night);
    bmp_destroy(day);
    return 0;
}
