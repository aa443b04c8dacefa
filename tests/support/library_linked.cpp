#include "library.h"

namespace zepbmp::test {

const Library& library() {
    static const Library linked = {
        .create = &::bmp_create,
        .destroy = &::bmp_destroy,
        .pointer = &::bmp_pointer,
        .clear = &::bmp_clear,
        .copy = &::bmp_copy,
        .blt = &::bmp_blt,
        .interporate = &::bmp_interporate,
        .draw_rect = &::bmp_draw_rect,
        .draw_line = &::bmp_draw_line,
        .translate_color = &::bmp_translate_color,
        .set_palette = &::bmp_set_palette,
        .display = &::bmp_display,
        .compose = &::bmp_compose,
        .compose_color = &::bmp_compose_color,
        .alpha_rect = &::bmp_alpha_rect,
        .alpha_circle = &::bmp_alpha_circle,
        .map_polygon = &::bmp_map_polygon,
        .map_rect = &::bmp_map_rect,
    };
    return linked;
}

}  // namespace zepbmp::test
