/* Runs zepbmp.dll on any 32-bit processor and prints what came out of it, one line each:
 *   code from ADDRESS
 *   code to ADDRESS    where the DLL's code was loaded
 *   level 0            or: level 1 to 4
 *   pictures HASH      what is the same at every level
 *   compositions HASH  what level 0 rounds otherwise
 * Exit status 0 when the DLL loads, allocates nothing while it does, and everything it allocates later is freed.
 *
 * It has no C runtime, which would use instructions that the processor may lack; for the same reason it may be run with
 * stand_ins.c in the place of msvcrt.dll and gdi32.dll, which count what the DLL asks of them. */
#include <windows.h>

#include "zepbmp.h"

enum { kWidth = 61, kHeight = 37 };

static void write_text(const char* text) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, (DWORD)lstrlenA(text), &written, NULL);
}

static void fail(const char* why) {
    write_text("error: ");
    write_text(why);
    write_text("\r\n");
    ExitProcess(1);
}

static void write_hex(const char* name, uint32_t value) {
    char line[] = " 00000000\r\n";
    for (int i = 0; i < 8; ++i)
        line[1 + i] = "0123456789abcdef"[value >> (28 - 4 * i) & 15];
    write_text(name);
    write_text(line);
}

static HMODULE dll;

static FARPROC find(const char* name) {
    const FARPROC function = GetProcAddress(dll, name);
    if (!function)
        fail(name);
    return function;
}

/* A function of the DLL by its decorated name, with the type that the header gives it. */
#define FIND(function, bytes) ((__typeof__(&function))(void (*)(void))find("_" #function "@" #bytes))

/* FNV-1a over the lines without their padding. */
static uint32_t hash_picture(const Bitmap* bitmap, uint32_t hash) {
    for (int y = 0; y < bitmap->height; ++y) {
        const uint8_t* line = bitmap->pixels + y * bitmap->pitch;
        for (int i = 0; i < bitmap->width * bitmap->bytes_per_pixel; ++i)
            hash = (hash ^ line[i]) * 16777619u;
    }
    return hash;
}

static void fill_with_noise(Bitmap* bitmap, uint32_t seed) {
    for (int i = 0; i < bitmap->pitch * bitmap->height; ++i) {
        seed = seed * 1664525u + 1013904223u;
        bitmap->pixels[i] = (uint8_t)(seed >> 24);
    }
}

static void run(void) {
    uint32_t pictures = 2166136261u, compositions = 2166136261u;
    static const int32_t formats[] = {BMP_FMT_YUY2, BMP_FMT_RGBQ};
    static const BmpVertex corners[] = {
        {0, 0, 1, 5, 2}, {60, 0, 0.75f, 55, 6}, {60, 36, 0.5f, 50, 35}, {0, 36, 1, 2, 30}};
    Bitmap* const weights = FIND(bmp_create, 16)(kWidth, kHeight, BMP_FMT_PWRW, BMP_CREATE_ZERO);
    if (!weights)
        fail("no bitmap");
    FIND(bmp_alpha_circle, 28)(weights, 30, 18, 17, 9, 1, BMP_SHAPE_COSINE);
    FIND(bmp_alpha_rect, 32)(weights, 3.25f, 4.5f, 20, 9, 3, 3, BMP_SHAPE_MAX);
    pictures = hash_picture(weights, pictures);
    for (int i = 0; i < 2; ++i) {
        Bitmap* picture[4];
        for (int k = 0; k < 4; ++k) {
            picture[k] = FIND(bmp_create, 16)(kWidth, kHeight, formats[i], BMP_CREATE_ZERO);
            if (!picture[k])
                fail("no bitmap");
        }
        Bitmap* const plane = FIND(bmp_create, 16)(kWidth, kHeight, BMP_FMT_PWRW, BMP_CREATE_ZERO);
        if (!plane)
            fail("no bitmap");
        fill_with_noise(picture[0], 1);
        fill_with_noise(picture[1], 2);
        FIND(bmp_copy, 12)(picture[3], picture[1], 0);
        FIND(bmp_clear, 8)(picture[3], BMP_FIELD);
        FIND(bmp_blt, 36)(picture[3], -3, 5, 40, 20, picture[0], 2, -1, BMP_FIELD | BMP_FIELD_ODD);
        FIND(bmp_draw_rect, 28)(picture[3], 30, 20, 50, 30, FIND(bmp_translate_color, 8)(NULL, 0x123456), 0);
        pictures = hash_picture(picture[3], pictures);
        FIND(bmp_interporate, 12)(picture[2], picture[0], BMP_FIELD_ODD);
        FIND(bmp_map_polygon, 32)(picture[2], plane, NULL, picture[1], NULL, corners, 4, BMP_MAP_ANTIALIAS);
        pictures = hash_picture(plane, hash_picture(picture[2], pictures));
        FIND(bmp_map_rect, 52)(picture[2], weights, 4.5f, 3, 40, 30, picture[0], NULL, 0, 0, 60, 36, 0);
        pictures = hash_picture(picture[2], pictures);
        FIND(bmp_compose, 20)(picture[3], picture[0], picture[1], weights, 0);
        compositions = hash_picture(picture[3], compositions);
        FIND(bmp_compose, 20)(picture[3], picture[0], picture[1], BMP_INTEGER(1000), BMP_COMPOSE_LEVEL);
        compositions = hash_picture(picture[3], compositions);
        FIND(bmp_compose_color, 28)(picture[3], picture[0], picture[1], weights, plane, 0x40c020, 0);
        compositions = hash_picture(picture[3], compositions);
        FIND(bmp_destroy, 4)(plane);
        for (int k = 0; k < 4; ++k)
            FIND(bmp_destroy, 4)(picture[k]);
    }
    Bitmap* const indices = FIND(bmp_create, 16)(kWidth, kHeight, BMP_FMT_RGB8, BMP_CREATE_ZERO);
    if (!indices)
        fail("no bitmap");
    FIND(bmp_draw_line, 28)(indices, 3, 4, 57, 31, 200, 0);
    FIND(bmp_draw_rect, 28)(indices, 5, 6, 40, 20, 85, 16);
    FIND(bmp_set_palette, 12)(indices, 200, 0xff0000);
    FIND(bmp_display, 32)(NULL, 0, 0, kWidth, kHeight, indices, 0, 0);
    pictures = (hash_picture(indices, pictures) ^ *FIND(bmp_pointer, 12)(indices, 3, 4)) * 16777619u;
    FIND(bmp_destroy, 4)(indices);
    FIND(bmp_destroy, 4)(weights);
    write_hex("pictures", pictures);
    write_hex("compositions", compositions);
}

/* Level 0 keeps the fourth byte of RGBQ, the others mix it. */
static int is_level_0(void) {
    Bitmap* const bitmap = FIND(bmp_create, 16)(4, 1, BMP_FMT_RGBQ, BMP_CREATE_ZERO);
    Bitmap* const other = FIND(bmp_create, 16)(4, 1, BMP_FMT_RGBQ, BMP_CREATE_ZERO);
    Bitmap* const full = FIND(bmp_create, 16)(4, 1, BMP_FMT_PWRW, BMP_CREATE_ZERO);
    if (!bitmap || !other || !full)
        fail("no bitmap");
    for (int i = 0; i < 16; ++i)
        other->pixels[i] = 200;
    for (int i = 0; i < 4; ++i)
        ((uint16_t*)full->pixels)[i] = 4096;
    FIND(bmp_compose, 20)(bitmap, bitmap, other, full, 0);
    if (bitmap->pixels[0] != 200)
        fail("a composition did not draw");
    const int kept = bitmap->pixels[3] == 0;
    FIND(bmp_destroy, 4)(full);
    FIND(bmp_destroy, 4)(other);
    FIND(bmp_destroy, 4)(bitmap);
    return kept;
}

/* Where the loader put the DLL's code. */
static void write_code_range(void) {
    const char* const image = (const char*)dll;
    const IMAGE_NT_HEADERS* const headers =
        (const IMAGE_NT_HEADERS*)(image + ((const IMAGE_DOS_HEADER*)image)->e_lfanew);
    const IMAGE_SECTION_HEADER* const text = IMAGE_FIRST_SECTION(headers);
    const uint32_t first = (uint32_t)(uintptr_t)image + text->VirtualAddress;
    write_hex("code from", first);
    write_hex("code to", first + text->Misc.VirtualSize - 1);
}

__attribute__((force_align_arg_pointer)) void __stdcall start(void) {
    const HMODULE runtime = LoadLibraryA("msvcrt.dll");
    /* Allocations ever made, and those not freed yet; only stand_ins.c has them. */
    const volatile LONG* const made = (const LONG*)(uintptr_t)GetProcAddress(runtime, "allocations_made");
    const volatile LONG* const kept = (const LONG*)(uintptr_t)GetProcAddress(runtime, "allocations_kept");
    dll = LoadLibraryA("zepbmp.dll");
    if (!dll)
        fail("zepbmp.dll does not load");
    if (made && *made != 0)
        fail("loading allocates");
    write_code_range();
    write_text(is_level_0() ? "level 0\r\n" : "level 1 to 4\r\n");
    run();
    if (made && (*made == 0 || *kept != 0))
        fail("what was allocated was not freed");
    ExitProcess(0);
}
