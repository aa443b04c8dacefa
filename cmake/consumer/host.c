/* A host: draws a weight map and mixes two frames under it. Exit status 0 when the picture is right. */
#include <stdio.h>
#include <string.h>
#include <zepbmp.h>

int main(void) {
    enum { kWidth = 10, kHeight = 4 };
    Bitmap* frame = bmp_create(kWidth, kHeight, BMP_FMT_YUY2, BMP_CREATE_ZERO);
    Bitmap* white = bmp_create(kWidth, kHeight, BMP_FMT_YUY2, 0);
    Bitmap* weights = bmp_create(kWidth, kHeight, BMP_FMT_PWRW, BMP_CREATE_ZERO);
    if (!frame || !white || !weights) {
        fputs("no memory\n", stderr);
        return 1;
    }
    memset(white->pixels, 0xeb, (size_t)(white->pitch * white->height));
    bmp_alpha_rect(weights, 4, 1, 4, 2, 0, 0, BMP_SHAPE_ADD);
    bmp_compose(frame, frame, white, weights, 0);

    int wrong = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const int inside = x >= 4 && x < 8 && y >= 1 && y < 3;
            wrong += *bmp_pointer(frame, x, y) != (inside ? 0xeb : 0);
        }
    bmp_destroy(weights);
    bmp_destroy(white);
    bmp_destroy(frame);
    printf("%d wrong pixels\n", wrong);
    return wrong != 0;
}
