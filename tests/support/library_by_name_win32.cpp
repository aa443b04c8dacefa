/// \file
/// The exports of zepbmp.dll, found by their decorated names as a host finds them.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "library.h"

namespace zepbmp::test {
namespace {

template <class Function>
void find(HMODULE dll, const char* name, Function& function) {
    const FARPROC address = GetProcAddress(dll, name);
    if (!address) {
        std::fprintf(stderr, "zepbmp.dll has no export %s\n", name);
        std::exit(1);
    }
    static_assert(sizeof function == sizeof address);
    std::memcpy(&function, &address, sizeof function);
}

Library load() {
    const HMODULE dll = LoadLibraryA("zepbmp.dll");
    if (!dll) {
        std::fprintf(stderr, "zepbmp.dll does not load: error %lu\n", GetLastError());
        std::exit(1);
    }
    Library found;
    find(dll, "_bmp_create@16", found.create);
    find(dll, "_bmp_destroy@4", found.destroy);
    find(dll, "_bmp_pointer@12", found.pointer);
    find(dll, "_bmp_clear@8", found.clear);
    find(dll, "_bmp_copy@12", found.copy);
    find(dll, "_bmp_blt@36", found.blt);
    find(dll, "_bmp_interporate@12", found.interporate);
    find(dll, "_bmp_draw_rect@28", found.draw_rect);
    find(dll, "_bmp_draw_line@28", found.draw_line);
    find(dll, "_bmp_translate_color@8", found.translate_color);
    find(dll, "_bmp_set_palette@12", found.set_palette);
    find(dll, "_bmp_display@32", found.display);
    find(dll, "_bmp_compose@20", found.compose);
    find(dll, "_bmp_compose_color@28", found.compose_color);
    find(dll, "_bmp_alpha_rect@32", found.alpha_rect);
    find(dll, "_bmp_alpha_circle@28", found.alpha_circle);
    find(dll, "_bmp_map_polygon@32", found.map_polygon);
    find(dll, "_bmp_map_rect@52", found.map_rect);
    return found;
}

}  // namespace

const Library& library() {
    static const Library loaded = load();
    return loaded;
}

}  // namespace zepbmp::test
