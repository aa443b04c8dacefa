// Rectangles, lines, colour values.
//
// SPDX-License-Identifier: MIT
#include "model.h"

namespace model {

void bmp_draw_rect(Bitmap* bitmap, int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t color,
                   uint32_t mode) {
    for (int32_t y = 0; y < bitmap->height; ++y) {
        for (int32_t x = 0; x < bitmap->width; ++x) {
            if (x < left || x >= right || y < top || y >= bottom) {
                continue;
            }
            uint8_t* pixel = model::bmp_pointer(bitmap, x, y);
            if (bitmap->format == BMP_FMT_RGB8 && mode == 32) {
                *pixel = static_cast<uint8_t>(*pixel & color);
            } else if (bitmap->format == BMP_FMT_RGB8 && mode == 16) {
                *pixel = static_cast<uint8_t>(*pixel | color);
            } else if (mode == 0 && (bitmap->format == BMP_FMT_RGBQ || bitmap->format == BMP_FMT_PWRW)) {
                for (int32_t k = 0; k < bitmap->bytes_per_pixel; ++k) {
                    pixel[k] = static_cast<uint8_t>(color >> 8 * k);
                }
            }
        }
    }
}

void bmp_draw_line(Bitmap* bitmap, int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint32_t color, uint32_t mode) {
    if (bitmap->format != BMP_FMT_RGB8) {
        return;
    }
    const auto draw = [&](int32_t x, int32_t y) {
        uint8_t* pixel = model::bmp_pointer(bitmap, x, y);
        const uint8_t value = static_cast<uint8_t>(color & 0xff);
        switch (mode >> 4 & 7) {
        case 0: *pixel = value; break;
        case 1: *pixel = *pixel | value; break;
        case 2: *pixel = *pixel & value; break;
        case 3: *pixel = *pixel ^ value; break;
        default: break;
        }
    };
    const int32_t dx = x1 > x0 ? x1 - x0 : x0 - x1, x_step = x1 > x0 ? 1 : -1;
    const int32_t dy = y1 > y0 ? y1 - y0 : y0 - y1, y_step = y1 > y0 ? 1 : -1;
    int32_t x = x0, y = y0;
    if (x0 == x1) {
        for (; y != y1; y += y_step) {
            draw(x, y);
        }
    } else if (y0 == y1) {
        for (; x != x1; x += x_step) {
            draw(x, y);
        }
    } else if (dy > dx) {
        int32_t error = dy / 2;
        for (; y != y1; y += y_step) {
            draw(x, y);
            error -= dx;
            if (error <= 0) {
                error += dy;
                x += x_step;
            }
        }
    } else {
        int32_t error = dx / 2;
        for (; x != x1; x += x_step) {
            draw(x, y);
            error -= dy;
            if (error <= 0) {
                error += dx;
                y += y_step;
            }
        }
    }
}

uint32_t bmp_translate_color(const void*, uint32_t color) {
    const uint32_t red = color & 0xff, green = color >> 8 & 0xff, blue = color >> 16 & 0xff;
    return blue | green << 8 | red << 16;
}

}  // namespace model
