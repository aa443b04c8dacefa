/* One frame of a round wipe: two flat pictures, a soft circle between them, written as a PPM image.
 *
 *   wipe out.ppm
 */
#include <stdio.h>

#include "zepbmp.h"

enum { kWidth = 320, kHeight = 180 };

static void fill(Bitmap* bitmap, uint32_t pixel) {
    for (int y = 0; y < bitmap->height; ++y) {
        uint8_t* p = bmp_pointer(bitmap, 0, y);
        for (int x = 0; x < bitmap->width; ++x, p += 4) {
            p[0] = (uint8_t)pixel; /* blue */
            p[1] = (uint8_t)(pixel >> 8);
            p[2] = (uint8_t)(pixel >> 16);
            p[3] = 0;
        }
    }
}

static int write_ppm(const char* path, const Bitmap* bitmap) {
    FILE* file = fopen(path, "wb");
    if (!file)
        return 0;
    fprintf(file, "P6\n%d %d\n255\n", (int)bitmap->width, (int)bitmap->height);
    for (int y = 0; y < bitmap->height; ++y) {
        const uint8_t* p = bmp_pointer(bitmap, 0, y);
        for (int x = 0; x < bitmap->width; ++x, p += 4) {
            const uint8_t rgb[3] = {p[2], p[1], p[0]};
            fwrite(rgb, 1, sizeof rgb, file);
        }
    }
    const int failed = ferror(file);
    return fclose(file) == 0 && !failed;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: wipe out.ppm\n");
        return 2;
    }
    Bitmap* before = bmp_create(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    Bitmap* after = bmp_create(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    Bitmap* frame = bmp_create(kWidth, kHeight, BMP_FMT_RGBQ, BMP_CREATE_ZERO);
    Bitmap* weights = bmp_create(kWidth, kHeight, BMP_FMT_PWRW, 0);
    int status = 1;
    if (before && after && frame && weights) {
        fill(before, 0x00203040);
        fill(after, 0x00f0a030);

        /* A disc of radius 60 with a soft edge of 20 pixels; around it the weight becomes 0. */
        bmp_alpha_circle(weights, kWidth / 2, kHeight / 2, 60, 20, 1, BMP_SHAPE_COSINE);
        bmp_compose(frame, before, after, weights, 0);

        if (write_ppm(argv[1], frame))
            status = 0;
        else
            fprintf(stderr, "wipe: cannot write %s\n", argv[1]);
    } else {
        fprintf(stderr, "wipe: out of memory\n");
    }
    bmp_destroy(weights);
    bmp_destroy(frame);
    bmp_destroy(after);
    bmp_destroy(before);
    return status;
}
