/* Palette colours: a wheel of lines over rings, each pixel an index. Where bmp_display shows the bitmap, Windows looks
 * the colours up; here the example does. */
#include "pictures.h"

int main(int argc, char** argv) {
    const char* path = path_argument(argc, argv);
    Bitmap* indices = new_bitmap(kWidth, kHeight, BMP_FMT_RGB8, 0);
    Bitmap* frame = new_bitmap(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    uint32_t palette[256];

    for (int i = 0; i < 256; ++i) { /* from blue to yellow; colour references have red in the lowest byte */
        palette[i] = bmp_translate_color(NULL, (uint32_t)(i | i << 8 | (255 - i) << 16));
        bmp_set_palette(indices, i, palette[i]);
    }
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            *bmp_pointer(indices, x, y) = (uint8_t)(((x - 160) * (x - 160) + (y - 90) * (y - 90)) / 64);
    for (int x = 0; x < kWidth; x += 20)
        bmp_draw_line(indices, 160, 90, x, 0, 0xff, 0x30);     /* inverted */
    bmp_draw_rect(indices, 0, 150, kWidth, kHeight, 0xc0, 32); /* AND: fewer colours at the bottom */

    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            bmp_draw_rect(frame, x, y, x + 1, y + 1, palette[*bmp_pointer(indices, x, y)], 0);
    save(frame, path);

    bmp_destroy(frame);
    bmp_destroy(indices);
    return 0;
}
