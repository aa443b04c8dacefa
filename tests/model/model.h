// The library's meaning, written out once more for the tests: one pixel and one byte at a time, nothing shared with
// the library but its public header. Slow on purpose.
//
// Floating point is double with one rounding per operation. A build that computes on the x87 keeps its control word at
// 53-bit precision and round to nearest; no build of this code may contract or reassociate.
//
// SPDX-License-Identifier: MIT
#ifndef ZEPBMP_TESTS_MODEL_MODEL_H
#define ZEPBMP_TESTS_MODEL_MODEL_H

#include <cstdint>

#include "zepbmp.h"

namespace model {

// ---------------------------------------------------------------- the exports, arguments as in zepbmp.h

Bitmap* bmp_create(int32_t width, int32_t height, int32_t format, uint32_t flags);
void bmp_destroy(Bitmap* bitmap);
uint8_t* bmp_pointer(const Bitmap* bitmap, int32_t x, int32_t y);

void bmp_clear(Bitmap* bitmap, uint32_t flags);
void bmp_copy(Bitmap* destination, const Bitmap* source, uint32_t flags);
// Follows the written clipping with sums that wrap. A width or height below 1 together with a destination so far out
// that its sum wraps reads outside the source: give positive sizes.
void bmp_blt(Bitmap* destination, int32_t dest_x, int32_t dest_y, int32_t width, int32_t height, const Bitmap* source,
             int32_t src_x, int32_t src_y, uint32_t flags);
void bmp_interporate(Bitmap* destination, const Bitmap* source, uint32_t flags);

// Every end and every point between lies inside the bitmap.
void bmp_draw_line(Bitmap* bitmap, int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint32_t color, uint32_t mode);
void bmp_draw_rect(Bitmap* bitmap, int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t color,
                   uint32_t mode);
uint32_t bmp_translate_color(const void* ignored, uint32_t color);

// cpu_level 0: the reference arithmetic; 1 to 4: the arithmetic of the vector columns, one and the same for all four.
int32_t bmp_compose(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const void* mask, uint32_t flags,
                    int cpu_level);
int32_t bmp_compose_color(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const Bitmap* mask1,
                          const Bitmap* mask2, uint32_t color, uint32_t flags, int cpu_level);

void bmp_alpha_rect(Bitmap* bitmap, float x, float y, float width, float height, float radius_x, float radius_y,
                    uint32_t flags);
void bmp_alpha_circle(Bitmap* bitmap, float cx, float cy, float radius, float feather, float aspect, uint32_t flags);

// Walks the lines above the destination, too: a polygon that begins far up takes its time. A solid fill's level is held
// to 0..4096.
void bmp_map_polygon(Bitmap* dst, Bitmap* dst2, Bitmap* aux, const void* tex_a, const void* tex_b,
                     const BmpVertex* vertices, int32_t count, uint32_t flags);

// The filter, 0 to 20, that a texture is sampled with; -1: it has no pixel to sample.
int filter_index(const Bitmap* texture, const BmpVertex* vertices, int32_t count, uint32_t flags);

// Reads the nearest column or row of the source where the walk leaves it; draws nothing from a source without a pixel.
void bmp_map_rect(Bitmap* dest, Bitmap* weight_map, float dx0, float dy0, float dx1, float dy1, const Bitmap* src,
                  const int32_t* src_size, float sx0, float sy0, float sx1, float sy1, uint32_t flags);

// ---------------------------------------------------------------- the kernels' arithmetic, one byte each
//
// p1, p2      the byte of the first and of the second source
// colour      the colour's byte that belongs to this channel
// _reference  level 0; _vector: levels 1 to 4

// Two sources under a 16-bit weight; w belongs to p2.
uint8_t mix_w16_reference(uint8_t p1, uint8_t p2, uint16_t w);
uint8_t mix_w16_vector(uint8_t p1, uint8_t p2, uint16_t w);

// Two sources under a byte weight, 128 = full; w belongs to p2.
uint8_t mix_a8_reference(uint8_t p1, uint8_t p2, uint8_t w);
uint8_t mix_a8_vector(uint8_t p1, uint8_t p2, uint8_t w);

// Two sources under a pair of constant weights, 4096 - level and level.
uint8_t mix_level_reference(uint8_t p1, int32_t weight1, uint8_t p2, int32_t weight2);
uint8_t mix_level_vector(uint8_t p1, int32_t weight1, uint8_t p2, int32_t weight2);

// Colour band between the weights a and b: p2 gets a, the colour b - a, p1 4096 - b.
uint8_t band_rgbq_reference(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b);
uint8_t band_rgbq_vector(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b);
uint8_t band_luma_reference(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b);
uint8_t band_luma_vector(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b);
uint8_t band_chroma_reference(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a0, uint16_t a1, uint16_t b0,
                              uint16_t b1);
uint8_t band_chroma_vector(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a0, uint16_t a1, uint16_t b0, uint16_t b1);

// One source over a colour: the source gets w, the colour 4096 - w. The RGBQ form is the same at every level.
uint8_t colour_rgbq(uint8_t p, uint8_t colour, uint16_t w);
uint8_t colour_luma_reference(uint8_t p, uint8_t colour, uint16_t w);
uint8_t colour_luma_vector(uint8_t p, uint8_t colour, uint16_t w);
uint8_t colour_chroma_reference(uint8_t p, uint8_t colour, uint16_t w0, uint16_t w1);
uint8_t colour_chroma_vector(uint8_t p, uint8_t colour, uint16_t w0, uint16_t w1);

// ---------------------------------------------------------------- ramps of the soft circle, k = 0 (edge) .. 1024

uint16_t linear_ramp(int32_t k);
uint16_t cosine_ramp(int32_t k);

}  // namespace model

#endif  // ZEPBMP_TESTS_MODEL_MODEL_H
