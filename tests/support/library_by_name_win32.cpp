/// \file
/// The exports of zepbmp.dll, found by their names as a host finds them.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "library.h"

namespace zepbmp::test {
namespace {

// A name in the export table: 32-bit ones carry an underscore and the size of the arguments.
#if defined(__i386__)
#define ZEPBMP_NAME(name, bytes) "_" name "@" #bytes
#else
#define ZEPBMP_NAME(name, bytes) name
#endif

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
    find(dll, ZEPBMP_NAME("bmp_create", 16), found.create);
    find(dll, ZEPBMP_NAME("bmp_destroy", 4), found.destroy);
    find(dll, ZEPBMP_NAME("bmp_pointer", 12), found.pointer);
    find(dll, ZEPBMP_NAME("bmp_clear", 8), found.clear);
    find(dll, ZEPBMP_NAME("bmp_copy", 12), found.copy);
    find(dll, ZEPBMP_NAME("bmp_blt", 36), found.blt);
    find(dll, ZEPBMP_NAME("bmp_interporate", 12), found.interporate);
    find(dll, ZEPBMP_NAME("bmp_draw_rect", 28), found.draw_rect);
    find(dll, ZEPBMP_NAME("bmp_draw_line", 28), found.draw_line);
    find(dll, ZEPBMP_NAME("bmp_translate_color", 8), found.translate_color);
    find(dll, ZEPBMP_NAME("bmp_set_palette", 12), found.set_palette);
    find(dll, ZEPBMP_NAME("bmp_display", 32), found.display);
    find(dll, ZEPBMP_NAME("bmp_compose", 20), found.compose);
    find(dll, ZEPBMP_NAME("bmp_compose_color", 28), found.compose_color);
    find(dll, ZEPBMP_NAME("bmp_alpha_rect", 32), found.alpha_rect);
    find(dll, ZEPBMP_NAME("bmp_alpha_circle", 28), found.alpha_circle);
    find(dll, ZEPBMP_NAME("bmp_map_polygon", 32), found.map_polygon);
    find(dll, ZEPBMP_NAME("bmp_map_rect", 52), found.map_rect);
    return found;
}

}  // namespace

const Library& library() {
    static const Library loaded = load();
    return loaded;
}

}  // namespace zepbmp::test
