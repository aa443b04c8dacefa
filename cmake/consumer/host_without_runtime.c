/* A Windows host without a C runtime, so that any linker can link it: exit status 0 when a bitmap comes out right. */
#include <zepbmp.h>

__attribute__((dllimport)) void __stdcall ExitProcess(unsigned status);

__attribute__((force_align_arg_pointer)) void __stdcall start(void) {
    Bitmap* bitmap = bmp_create(3, 5, BMP_FMT_RGBQ, BMP_CREATE_ZERO);
    const int right = bitmap && bitmap->pitch == 16 && bmp_pointer(bitmap, 2, 4) == bitmap->pixels + 4 * 16 + 2 * 4;
    bmp_destroy(bitmap);
    ExitProcess(right ? 0 : 1);
}
