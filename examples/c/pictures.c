#include "pictures.h"

#include <stdio.h>
#include <stdlib.h>

static void fail(const char* what, const char* path) {
    fprintf(stderr, "error: %s%s\n", what, path);
    exit(1);
}

const char* path_argument(int argc, char** argv) {
    if (argc != 2)
        fail("give the PPM file to write as the only argument", "");
    return argv[1];
}

Bitmap* new_bitmap(int width, int height, int format, uint32_t flags) {
    Bitmap* bitmap = bmp_create(width, height, format, flags);
    if (!bitmap)
        fail("out of memory", "");
    return bitmap;
}

static void set_pixel(Bitmap* bitmap, int x, int y, int red, int green, int blue) {
    uint8_t* pixel = bmp_pointer(bitmap, x, y);
    const int light = (x / 16 + y / 16) % 2 * 16;
    pixel[0] = (uint8_t)(blue + light);
    pixel[1] = (uint8_t)(green + light);
    pixel[2] = (uint8_t)(red + light);
    pixel[3] = 0;
}

Bitmap* new_day(void) {
    Bitmap* day = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            set_pixel(day, x, y, 70 + x / 2, 120 + y / 2, 230 - y);
    return day;
}

Bitmap* new_night(void) {
    Bitmap* night = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            set_pixel(night, x, y, 10 + x / 8, 20, 40 + y / 4);
    return night;
}

void save(const Bitmap* bitmap, const char* path) {
    FILE* file = fopen(path, "wb");
    if (!file)
        fail("cannot write ", path);
    fprintf(file, "P6\n%d %d\n255\n", (int)bitmap->width, (int)bitmap->height);
    for (int y = 0; y < bitmap->height; ++y) {
        for (int x = 0; x < bitmap->width; ++x) {
            const uint8_t* pixel = bmp_pointer(bitmap, x, y);
            const uint8_t rgb[3] = {pixel[2], pixel[1], pixel[0]};
            fwrite(rgb, 1, sizeof rgb, file);
        }
    }
    const int failed = ferror(file);
    if (fclose(file) != 0 || failed)
        fail("cannot write ", path);
}
