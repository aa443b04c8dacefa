/// \file
/// The exports as a table, so that one text tests them however they were come by: linked in, or found by name in a DLL.
#pragma once

#include "zepbmp.h"

namespace zepbmp::test {

struct Library {
    decltype(&::bmp_create) create;
    decltype(&::bmp_destroy) destroy;
    decltype(&::bmp_pointer) pointer;
    decltype(&::bmp_clear) clear;
    decltype(&::bmp_copy) copy;
    decltype(&::bmp_blt) blt;
    decltype(&::bmp_interporate) interporate;
    decltype(&::bmp_draw_rect) draw_rect;
    decltype(&::bmp_draw_line) draw_line;
    decltype(&::bmp_translate_color) translate_color;
    decltype(&::bmp_set_palette) set_palette;
    decltype(&::bmp_display) display;
    decltype(&::bmp_compose) compose;
    decltype(&::bmp_compose_color) compose_color;
    decltype(&::bmp_alpha_rect) alpha_rect;
    decltype(&::bmp_alpha_circle) alpha_circle;
    decltype(&::bmp_map_polygon) map_polygon;
    decltype(&::bmp_map_rect) map_rect;
};

const Library& library();

}  // namespace zepbmp::test
