/* Rebuilds a frame from one field: the even lines show the day, the odd ones, which came later, already the night. */
#include "pictures.h"

int main(int argc, char** argv) {
    const char* path = path_argument(argc, argv);
    Bitmap *interlaced = new_day(), *night = new_night();
    Bitmap* frame = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, 0);

    bmp_copy(interlaced, night, BMP_FIELD | BMP_FIELD_ODD);
    bmp_interporate(frame, interlaced, 0); /* from the even field; BMP_FIELD_ODD takes the other one */
    save(frame, path);

    bmp_destroy(frame);
    bmp_destroy(night);
    bmp_destroy(interlaced);
    return 0;
}
