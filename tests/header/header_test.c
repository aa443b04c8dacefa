/* zepbmp.h alone, as C99 and as the oldest C++: nothing else has to be included before it. */
#include "zepbmp.h"

typedef char word_order_is_the_hosts[sizeof(void*) != 4 || sizeof(Bitmap) == 48 ? 1 : -1];
typedef char vertex_is_20_bytes[sizeof(BmpVertex) == 20 ? 1 : -1];

/* Every export can be named, called and its address taken. */
extern int zepbmp_header_test(Bitmap* bitmap);
int zepbmp_header_test(Bitmap* bitmap) {
    Bitmap*(BMP_CALL * create)(int32_t, int32_t, int32_t, uint32_t) = bmp_create;
    int32_t(BMP_CALL * compose)(Bitmap*, const Bitmap*, const Bitmap*, const void*, uint32_t) = bmp_compose;
    return create != 0 && compose != 0 && bitmap != 0 && BMP_INTEGER(5) != 0 ? BMP_FMT_A8 : BMP_FMT_YUY2;
}
