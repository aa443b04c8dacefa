/* A wipe for interlaced video: each field is drawn for its own moment, so that the edge moves at twice the frame rate.
 */
#include "pictures.h"

int main(int argc, char** argv) {
    const char* path = path_argument(argc, argv);
    Bitmap *day = new_day(), *night = new_night();
    Bitmap* weights = new_bitmap(kWidth, kHeight, BMP_FMT_PWRW, 0);
    Bitmap* frame = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, 0);

    for (uint32_t parity = 0; parity < 2; ++parity) { /* the even field first, the odd one half a frame later */
        const uint32_t field = BMP_FIELD | (parity ? BMP_FIELD_ODD : 0);
        bmp_clear(weights, field);
        bmp_alpha_rect(weights, 60.0f + 12.0f * (float)parity, 30.5f, 180, 120, 0, 0, BMP_SHAPE_MAX | field);
        bmp_compose(frame, day, night, weights, field);
    }
    save(frame, path);

    bmp_destroy(frame);
    bmp_destroy(weights);
    bmp_destroy(night);
    bmp_destroy(day);
    return 0;
}
