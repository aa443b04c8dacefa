#include "compose.h"
#include "zepbmp.h"

void compose_c(benchmark::State& state) {
    Bitmap* const src1 = bmp_create(kSide, kSide, BMP_FMT_YUY2, BMP_CREATE_ZERO);
    Bitmap* const src2 = bmp_create(kSide, kSide, BMP_FMT_YUY2, BMP_CREATE_ZERO);
    Bitmap* const mask = bmp_create(kSide, kSide, BMP_FMT_PWRW, BMP_CREATE_ZERO);
    Bitmap* const dest = bmp_create(kSide, kSide, BMP_FMT_YUY2, BMP_CREATE_ZERO);
    for (auto _ : state)
        bmp_compose(dest, src1, src2, mask, 0);
    for (Bitmap* const bitmap : {src1, src2, mask, dest})
        bmp_destroy(bitmap);
}
