/** @file
 * zepbmp: raster operations on in-memory video frames.
 *
 * This header is the whole boundary of the library, for C and for C++. The functions do their work on the caller's
 * thread and return when it is done. They check nothing: what the caller guarantees stands at each function, under
 * "@pre". A call that keeps these duties never reads or writes outside a bitmap.
 *
 * Units and scales used throughout:
 * - pixels and lines: integers; line 0 is the top line; float positions count from the top left corner of pixel (0, 0)
 * - weight: unsigned 16-bit, 0 = none, 4096 = full (a BMP_FMT_PWRW bitmap holds one per pixel)
 * - mask: unsigned 8-bit, 0 = none, 128 = full (a BMP_FMT_A8 bitmap holds one per pixel)
 * - level: integer 0..4096, one for a whole call
 *
 * Threads: there are no locks. Calls on distinct bitmaps may run at the same time; one bitmap must not be written by
 * one call while another call uses it.
 *
 * SPDX-License-Identifier: MIT
 */
#ifndef ZEPBMP_H
#define ZEPBMP_H

#include <stdint.h>

/** @name Version */
/** @{ */
/** A number of this version: major, minor, patch. */
#define ZEPBMP_VERSION_MAJOR 1
#define ZEPBMP_VERSION_MINOR 0
#define ZEPBMP_VERSION_PATCH 0
/** @} */

/** @name Groups of functions */
/** @{ */
/** What this version of the library exports: all 18 functions. A group that is 0, or not defined, does not link. */
#define ZEPBMP_HAS_BITMAPS 1  /* bmp_create bmp_destroy bmp_pointer                 */
#define ZEPBMP_HAS_COPIES 1   /* bmp_clear bmp_copy bmp_blt bmp_interporate         */
#define ZEPBMP_HAS_COMPOSE 1  /* bmp_compose bmp_compose_color                      */
#define ZEPBMP_HAS_SHAPES 1   /* bmp_alpha_rect bmp_alpha_circle                    */
#define ZEPBMP_HAS_DRAWING 1  /* bmp_draw_rect bmp_draw_line bmp_translate_color    */
#define ZEPBMP_HAS_DISPLAY 1  /* bmp_set_palette bmp_display                        */
#define ZEPBMP_HAS_POLYGONS 1 /* bmp_map_polygon                                    */
#define ZEPBMP_HAS_RECTS 1    /* bmp_map_rect                                       */
/** @} */

/** Calling convention of every function: the callee takes the arguments off the stack on 32-bit Windows. */
#if defined(_WIN32)
#define BMP_CALL __stdcall
#else
#define BMP_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------- formats and flags */

/** @name Pixel formats
 * Bytes are named in memory order. */
/** @{ */
#define BMP_FMT_YUY2 0  /**< 2 bytes: packed YUV 4:2:2, a pair of pixels is Y0 U Y1 V; "YUY2"            */
#define BMP_FMT_RGBQ 1  /**< 4 bytes: blue green red and a fourth byte; "RGBQ"                           */
#define BMP_FMT_PWRW 2  /**< 2 bytes: one unsigned 16-bit weight, 4096 = full; "PWRW"                    */
#define BMP_FMT_QUAD3 3 /**< 4 bytes of no fixed meaning                                                 */
#define BMP_FMT_QUAD4 4 /**< 4 bytes of no fixed meaning                                                 */
#define BMP_FMT_QUAD5 5 /**< 4 bytes of no fixed meaning                                                 */
#define BMP_FMT_RGB8 6  /**< 1 byte: palette index; "RGB8"                                               */
#define BMP_FMT_A8 7    /**< 1 byte: mask, 128 = full, or texture strength, 255 = full                   */
/** @} */

/** @name Field flags
 * For operations on one field of an interlaced frame. The first line is (flags & BMP_FIELD_ODD); the line step is 2
 * with BMP_FIELD, else 1. So BMP_FIELD_ODD alone skips line 0 and takes every line after it; where a function says so,
 * it counts only together with BMP_FIELD. */
/** @{ */
#define BMP_FIELD_ODD 1u /**< the first line is line 1    */
#define BMP_FIELD 2u     /**< every second line           */
/** @} */

/** Flag of bmp_create(): zero-filled. Bits 1 and 2 describe the picture's interlacing and are kept in the record. */
#define BMP_CREATE_ZERO 4u

/** Flag of bmp_compose(): the mask argument is a level. */
#define BMP_COMPOSE_LEVEL 0x10000u

/** @name Flags of bmp_alpha_rect() and bmp_alpha_circle() */
/** @{ */
#define BMP_SHAPE_ADD 0x00u                /**< weights add up                                                    */
#define BMP_SHAPE_MAX 0x10u                /**< the larger weight is kept                                         */
#define BMP_SHAPE_ELLIPTIC 0x10000u        /**< rectangle: elliptical corners, together with one of the next two  */
#define BMP_SHAPE_ELLIPTIC_PLAIN 0x20000u  /**< one of them; both draw the same picture                           */
#define BMP_SHAPE_ELLIPTIC_EDGES 0x800000u /**< the other of them                                                */
#define BMP_SHAPE_COSINE 0x40000u          /**< circle: raised-cosine ramp instead of the linear one              */
/** @} */

/** @name Flags of bmp_map_polygon() */
/** @{ */
#define BMP_MAP_EXTRA 16u         /**< the texture is tex_b; tex_a goes to the kernel (a tint colour)     */
#define BMP_MAP_SOLID 32u         /**< with BMP_MAP_EXTRA: solid fill, tex_a colour, tex_b level          */
#define BMP_MAP_ANTIALIAS 0x4000u /**< anti-aliased edges                                                 */
#define BMP_MAP_NO_FILTER 0x8000u /**< nearest samples, no anti-aliasing                                  */
/** @} */

/** An integer (a level or a packed colour) in the place of a bitmap argument. */
#define BMP_INTEGER(value) ((const void*)(intptr_t)(value))

/* ---------------------------------------------------------------- records */

/** A bitmap: this header, then the lines, in one block.
 *
 * On a 32-bit target it is twelve 32-bit words (48 bytes); on a 64-bit target the two pointers are wider and the order
 * is the same. The host may read every field and writes none. */
typedef struct Bitmap {
    int32_t width;           /**< pixels, as passed                                                            */
    int32_t height;          /**< lines, as passed                                                             */
    int32_t pitch;           /**< bytes from a line to the next: (bytes_per_pixel * width + 15) & ~15          */
    int32_t bit_count;       /**< bytes_per_pixel * 8                                                          */
    uint8_t* pixels;         /**< first byte of line 0, 16-byte aligned                                        */
    void* dib_info;          /**< display header, null until first needed; the library's own                   */
    uint32_t fourcc;         /**< first character in the lowest byte; written for YUY2, RGBQ, PWRW, RGB8 only  */
    uint32_t interlace;      /**< 0, 1, 2 for create_flags 0, 2, 3; not written for 1                          */
    uint32_t reserved;       /**< never read or written                                                        */
    int32_t bytes_per_pixel; /**< 1, 2 or 4 for the formats above                                              */
    uint32_t create_flags;   /**< flags of bmp_create & 3                                                      */
    uint32_t format;         /**< BMP_FMT_..., as passed                                                       */
} Bitmap;

/** A polygon's corner: five floats, 20 bytes. Positions count from the top left corner of pixel (0, 0). */
typedef struct BmpVertex {
    float u; /**< source x, pixels                                                                         */
    float v; /**< source y, lines of the frame, also where one field of it is sampled                      */
    float w; /**< perspective weight, above 0: 1 / distance, in any unit; the same at every corner: affine */
    float x; /**< destination x, pixels                                                                    */
    float y; /**< destination y, lines of the frame                                                        */
} BmpVertex;

/* ---------------------------------------------------------------- bitmaps */

/** Makes a bitmap.
 *
 * @param width   pixels
 * @param height  lines
 * @param format  BMP_FMT_...; any other value gives a bitmap whose pixel size in bytes is its height
 * @param flags   bits 1 and 2: kept in create_flags; BMP_CREATE_ZERO: all bytes zero, else uninitialised
 * @return the bitmap, or null when memory is short, or (64-bit targets) when width or height is negative or the size
 *         does not fit. On a 32-bit target sizes wrap at 32 bits.
 * @pre On a 32-bit target the caller keeps pitch * height below 2^32 - 64. It frees the bitmap with bmp_destroy(). */
Bitmap* BMP_CALL bmp_create(int32_t width, int32_t height, int32_t format, uint32_t flags);

/** Frees a bitmap and its display header.
 *
 * @param bitmap  what bmp_create() returned; null is ignored */
void BMP_CALL bmp_destroy(Bitmap* bitmap);

/** Address of pixel (x, y): pixels + y * pitch + x * bytes_per_pixel.
 *
 * @param bitmap  the bitmap
 * @param x       column
 * @param y       line
 * @return the address. Nothing is checked: coordinates outside the bitmap give addresses outside it. */
uint8_t* BMP_CALL bmp_pointer(const Bitmap* bitmap, int32_t x, int32_t y);

/* ---------------------------------------------------------------- fills, copies, blits: any format */

/** Sets the lines that the field flags select to zero, padding included.
 *
 * @param bitmap  of any format
 * @param flags   field flags */
void BMP_CALL bmp_clear(Bitmap* bitmap, uint32_t flags);

/** Copies whole lines, padding included.
 *
 * @param destination  of any format
 * @param source       what is copied
 * @param flags        without BMP_FIELD: the whole source, as one block. With BMP_FIELD: the lines that the field flags
 *                     select of the destination, each with the destination's pitch
 * @pre Source and destination have the same geometry and do not overlap, or are the same bitmap. */
void BMP_CALL bmp_copy(Bitmap* destination, const Bitmap* source, uint32_t flags);

/** Copies a rectangle of width x height pixels, clipped to both bitmaps.
 *
 * A part left of or above the source moves the destination by as much. A part left of or above the destination does not
 * move the source: the rectangle's left (top) pixels land at column (line) 0, the right (bottom) ones are dropped. A
 * width or height below 1 copies nothing.
 *
 * Within one bitmap, where a line's source and destination overlap, bytes move in 4-byte words from left to right, then
 * single bytes.
 *
 * @param destination  of any format
 * @param dest_x       left column in the destination
 * @param dest_y       top line in the destination
 * @param width        pixels
 * @param height       lines
 * @param source       what is copied, or the destination itself
 * @param src_x        left column in the source
 * @param src_y        top line in the source
 * @param flags        BMP_FIELD: every second line of both, those whose destination line has the parity of
 *                     BMP_FIELD_ODD
 * @pre Both bitmaps have the same bytes_per_pixel. */
void BMP_CALL bmp_blt(Bitmap* destination, int32_t dest_x, int32_t dest_y, int32_t width, int32_t height,
                      const Bitmap* source, int32_t src_x, int32_t src_y, uint32_t flags);

/** Rebuilds a frame from one field of the source.
 *
 * The field's lines are copied, each line between two of them is their rounded average, byte by byte: (a + b + 1) >> 1;
 * a line beyond the field's first or last is its copy. Works in place. A bitmap without a line of that field stays
 * unchanged.
 *
 * @param destination  of any format; may be the source
 * @param source       holds the field
 * @param flags        BMP_FIELD_ODD selects the field: lines 1, 3, 5 and so on; without it lines 0, 2, 4. BMP_FIELD
 *                     does not count
 * @pre The source has at least the destination's pitch and height. */
void BMP_CALL bmp_interporate(Bitmap* destination, const Bitmap* source, uint32_t flags);

/* ---------------------------------------------------------------- drawing, colours */

/** Fills columns left..right-1 of lines top..bottom-1, clipped to the bitmap.
 *
 * An empty rectangle fills nothing.
 *
 * @param bitmap  RGBQ, PWRW or RGB8; other formats stay unchanged
 * @param left    first column
 * @param top     first line
 * @param right   column behind the last
 * @param bottom  line behind the last
 * @param color   what is stored, or combined with what is there
 * @param mode    RGBQ, PWRW: 0 stores color (PWRW: its low 16 bits). RGB8: 16 ORs, 32 ANDs the low byte of color; it
 *                can only be masked, not set. The whole mode word counts: other modes draw nothing */
void BMP_CALL bmp_draw_rect(Bitmap* bitmap, int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t color,
                            uint32_t mode);

/** Draws max(|x1-x0|, |y1-y0|) pixels of a line from (x0, y0) toward (x1, y1), which is itself not drawn.
 *
 * Of the longer of the two distances, each pixel takes one step; an error term, half of it at first (truncated), is
 * lessened by the shorter one with each step, and where that leaves it at or below 0 a step across follows and the
 * longer one is added. A 45-degree line counts as longer in x.
 *
 * @param bitmap  RGB8; other formats stay unchanged
 * @param x0      first pixel's column
 * @param y0      first pixel's line
 * @param x1      column of the end, which is not drawn
 * @param y1      line of the end
 * @param color   a byte, in the low 8 bits
 * @param mode    mode & 0x70: 0x00 set, 0x10 OR, 0x20 AND, 0x30 XOR the low byte of color; the others draw nothing.
 *                Other bits of mode do not count
 * @pre Both ends lie inside the bitmap: there is no clipping. */
void BMP_CALL bmp_draw_line(Bitmap* bitmap, int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint32_t color,
                            uint32_t mode);

/** Turns a Windows colour reference 0x00BBGGRR into an RGBQ pixel 0x00RRGGBB and back.
 *
 * @param ignored  not read
 * @param color    either of them
 * @return the other one; the top byte is dropped */
uint32_t BMP_CALL bmp_translate_color(const void* ignored, uint32_t color);

/* ---------------------------------------------------------------- palette, display */

/** Stores a colour in an entry of an RGB8 bitmap's colour table, which starts as a grey ramp.
 *
 * The table is part of the display header, which is built on first need. Another format or index builds the header and
 * stores nothing; where memory is short nothing is stored, and the next call tries again.
 *
 * @param bitmap  RGB8
 * @param index   entry, 0..255
 * @param color   blue in bits 0..7, green 8..15, red 16..23; of a Windows colour reference see bmp_translate_color() */
void BMP_CALL bmp_set_palette(Bitmap* bitmap, int32_t index, uint32_t color);

/** Shows a bitmap on a Windows device context (HDC) with SetDIBitsToDevice.
 *
 * Windows counts the source y and the scan lines from the last line upward: line k of the rectangle shows the bitmap's
 * line bitmap height - height + start_line + k, and the device keeps what it has where there is no such line. A
 * rectangle as high as the bitmap and start_line 0 show the picture from its top.
 *
 * The bitmap is described to Windows by its display header, built on first need: an uncompressed picture from the top,
 * as wide as its padded line (pitch / bytes_per_pixel), with 8 bits a pixel and the colour table for RGB8, else
 * 8 * bytes_per_pixel. No colour is converted: the 16-bit formats are shown as 5-5-5 RGB.
 *
 * Other systems than Windows have no device context: the header is built, nothing is shown.
 *
 * @param device_context  the HDC
 * @param dest_x          left column of the device's rectangle, pixels
 * @param dest_y          its top line
 * @param width           its width, pixels
 * @param height          its height, lines
 * @param bitmap          what is shown; its source y is always 0
 * @param src_x           the bitmap's column at the rectangle's left edge
 * @param start_line      first scan line, not a source y
 * @return the number of lines set; 0 on failure, where memory for the header is short, and on other systems */
int32_t BMP_CALL bmp_display(void* device_context, int32_t dest_x, int32_t dest_y, int32_t width, int32_t height,
                             Bitmap* bitmap, int32_t src_x, int32_t start_line);

/* ---------------------------------------------------------------- composition */

/** Mixes two frames: dest = src1 where the weight is 0, src2 where it is full, (src2*w + src1*(full-w)) / full between.
 *
 * In YUY2 both pixels of a pair take the chroma weight of the pair's first pixel. Up to 7 pixels of a line's padding
 * are written too. The fourth byte of RGBQ is mixed like a colour at processor levels 1 to 4 and kept at level 0; how
 * the levels round is told in docs/rounding.md.
 *
 * @param dest   RGBQ or YUY2; other formats only with BMP_COMPOSE_LEVEL. Its width and height decide what is processed
 * @param src1   where the weight is 0
 * @param src2   where the weight is full
 * @param mask   a bitmap: format A8 is read as masks (full 128), every other format as 16-bit weights (full 4096). With
 *               BMP_COMPOSE_LEVEL: BMP_INTEGER(level), and whole stored lines are mixed byte by byte, whatever the
 *               format
 * @param flags  field flags, BMP_COMPOSE_LEVEL
 * @return 0
 * @pre Sources and mask are at least as large as dest, sources of its format; a mask that is read as 16-bit weights has
 *      at least 2 bytes a pixel; dest may be one of the sources but overlaps none otherwise. Weights of a mask are
 *      0..4096 (0..128 in A8) for a mix; larger ones extrapolate. */
int32_t BMP_CALL bmp_compose(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const void* mask, uint32_t flags);

/** Mixes frames with a flat colour.
 *
 * With mask2, src2 gets weight a of mask1, the colour b - a (b of mask2), src1 4096 - b: a coloured band where the two
 * masks differ. Without it, src1 gets weight w of mask1, the colour 4096 - w, and src2 is not read.
 *
 * Masks are read as 16-bit weights whatever their format. A last odd pixel of a YUY2 line is left alone.
 *
 * @param dest   RGBQ or YUY2; other formats stay unchanged
 * @param src1   a frame
 * @param src2   with mask2: another frame
 * @param mask1  weights a of src2, or w of src1
 * @param mask2  weights b, or null
 * @param color  YUY2: Y in bits 16..23, U 8..15, V 0..7. RGBQ: byte k of the pixel in bits 8k..8k+7; the band at
 *               processor level 0 takes bytes 0 and 2 in the opposite order
 * @param flags  field flags
 * @return 0
 * @pre As for bmp_compose(). */
int32_t BMP_CALL bmp_compose_color(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const Bitmap* mask1,
                                   const Bitmap* mask2, uint32_t color, uint32_t flags);

/* ---------------------------------------------------------------- shapes in weight maps */

/** Draws a rectangle with edges at 1/64 pixel into a weight map.
 *
 * A pixel gets its covered fraction of 4096. Whole pixels of whole lines become 4096 also in add mode. Added weights
 * wrap at 65536. Edges at 2^25 pixels or lines and beyond draw nothing.
 *
 * @param bitmap    the weight map
 * @param x         left edge; pixels, truncated to 1/64, as are the next three
 * @param y         top edge; frame lines
 * @param width     pixels
 * @param height    frame lines
 * @param radius_x  corners' radius across, only for elliptical corners; both radii shrink, keeping their ratio, to half
 *                  the rectangle
 * @param radius_y  corners' radius down
 * @param flags     field flags, BMP_FIELD_ODD only with BMP_FIELD; mode BMP_SHAPE_ADD or BMP_SHAPE_MAX, another one
 *                  draws nothing; BMP_SHAPE_ELLIPTIC with BMP_SHAPE_ELLIPTIC_PLAIN or BMP_SHAPE_ELLIPTIC_EDGES:
 *                  elliptical corners, always the larger weight
 * @pre The bitmap has 16-bit pixels. */
void BMP_CALL bmp_alpha_rect(Bitmap* bitmap, float x, float y, float width, float height, float radius_x,
                             float radius_y, uint32_t flags);

/** Draws a disc into a weight map and sets everything around it to 0, on every line that the field flags select.
 *
 * Columns from 2^31 on count as far left: a radius that large draws nothing.
 *
 * @param bitmap   the weight map
 * @param cx       centre, pixels
 * @param cy       centre, pixels; line y covers y * aspect .. (y + 1) * aspect
 * @param radius   outer radius, pixels
 * @param feather  width of the soft edge inside the radius; 0 or less: a hard edge, anti-aliased with 4 x 4 samples
 * @param aspect   height of a line in pixels
 * @param flags    field flags; BMP_SHAPE_COSINE: raised-cosine ramp
 * @pre The bitmap has 16-bit pixels. */
void BMP_CALL bmp_alpha_circle(Bitmap* bitmap, float cx, float cy, float radius, float feather, float aspect,
                               uint32_t flags);

/* ---------------------------------------------------------------- mapping */

/** Maps a source bitmap onto a polygon, tints the polygon through it, or fills the polygon with a colour.
 *
 * What is drawn, by the format of the source:
 * - YUY2: the source, in its own layout, onto 2 bytes a pixel or more; with or without aux
 * - RGBQ: the source, in its own layout, onto 4 bytes a pixel or more; with or without aux
 * - PWRW: the source, onto PWRW; not with aux
 * - A8, onto YUY2 and RGBQ: a tint, with BMP_MAP_EXTRA: the source says how far the picture goes toward the colour
 *   tex_a, 255 = all the way (YUY2 0x00YYUUVV; RGBQ byte k in bits 8k..8k+7, byte 3 stays); neither with aux nor
 *   anti-aliased
 *
 * Any other pair draws nothing. Without aux neither does BMP_MAP_EXTRA with a source other than A8.
 *
 * Mapping averages a box of the source that is about as large as a destination pixel, up to 8 columns and 4 lines, and
 * held inside the source. BMP_MAP_NO_FILTER takes the nearest pixel (of an A8 source a bilinear sample).
 *
 * With both BMP_MAP_EXTRA and BMP_MAP_SOLID nothing is sampled: YUY2 and RGBQ are filled with the colour tex_a (YUY2
 * 0x00YYUUVV; RGBQ byte k in bits 8k..8k+7) at the level BMP_INTEGER(level) in tex_b, with anti-aliased edges; dst2
 * gets coverage times level; aux is not used. A level outside 1..4096 and other formats draw nothing.
 *
 * Nothing is drawn either without a destination or a source, where count is below 1, an x or y is not finite, the
 * source has no pixel (a field of one line has none), or memory is short: very many corners, or very wide anti-aliased
 * lines, take one allocation.
 *
 * Positions count to 1/4096 pixel and are held to +-2^19 pixels, with anti-aliased edges y to a third of that. Of a
 * source larger than 32768 in a direction the first 32768 count.
 *
 * @param dst       destination, or null: then dst2 is the destination
 * @param dst2      with dst: a coverage plane, or null. Where something is drawn an A8 plane becomes 128, a PWRW plane
 *                  4096, both in parts at anti-aliased edges; any other format stays unchanged
 * @param aux       depth buffer, or null: one float per pixel, larger = nearer. A pixel is drawn where its w is above
 *                  the float, which then becomes w. The coverage plane is marked in any case
 * @param tex_a     the source, or null; with BMP_MAP_EXTRA a colour: BMP_INTEGER(colour)
 * @param tex_b     the source where tex_a is null or BMP_MAP_EXTRA is set
 * @param vertices  count corners, in order; convex, concave or self-crossing: what is enclosed twice is outside
 * @param count     how many
 * @param flags     BMP_FIELD draws the lines of BMP_FIELD_ODD's parity only. BMP_FIELD_ODD, also without BMP_FIELD: of
 *                  a source that was created as interlaced (create_flags 2 or 3) one field is sampled, the odd one with
 *                  this flag, else the even one. BMP_MAP_...: see there; BMP_MAP_ANTIALIAS has no effect with aux or
 *                  BMP_MAP_NO_FILTER, BMP_MAP_SOLID none without BMP_MAP_EXTRA
 * @pre dst2 and aux are at least as wide and high as dst; aux has 4 bytes per pixel. Source, dst, dst2 and aux are
 *      distinct. Every w is above 0; others, and a u or v that is not finite, give some picture. */
void BMP_CALL bmp_map_polygon(Bitmap* dst, Bitmap* dst2, Bitmap* aux, const void* tex_a, const void* tex_b,
                              const BmpVertex* vertices, int32_t count, uint32_t flags);

/** Resamples a rectangle of src onto a rectangle of dest: each destination pixel becomes the average of the source
 * under it, weighted by exact overlaps.
 *
 * The format is that of dest:
 * - RGB8: a byte is the average times coverage: at the rectangle's edges it fades toward 0. Indices count as
 *   intensities.
 * - RGBQ: a whole pixel is the average, its weight 4096. One covered in part is mixed with what dest holds by coverage
 *   and the weight that is there, and the weights add up, modulo 65536: clear the map before a new picture. Byte 3
 *   stays.
 * - YUY2: the same; mixed are also the first pixel of every line, until a pair begins, and an odd one at the end, and a
 *   line that is covered in part: there a weight goes beyond 4096 where it was not 0.
 *
 * The other pixel of a YUY2 bitmap's last pair stands in the padding where the width is odd; it counts as a pixel. An
 * empty rectangle and other formats draw nothing. Nothing is drawn outside dest or weight_map.
 *
 * A start left of or above its bitmap, or beyond its end, is moved to the edge, and the other rectangle's start in
 * proportion; scales do not change. Ends stay. A source pixel past the last one reads as the last one.
 *
 * @param dest        RGB8, RGBQ or YUY2
 * @param weight_map  RGBQ, YUY2: the destination's coverage, PWRW, read and written; null draws nothing. RGB8: null;
 *                    otherwise nothing is drawn
 * @param dx0         destination rectangle: left; pixels, truncated to 1/4096
 * @param dy0         top; lines, truncated to 1/2048
 * @param dx1         right, exclusive; truncated as dx0
 * @param dy1         bottom, exclusive; truncated as dy0
 * @param src         the source
 * @param src_size    null; otherwise nothing is drawn
 * @param sx0         source rectangle: left. Source pixels become steps of whole 1/4096 pixels and 1/2048 lines of the
 *                    destination, rounded up
 * @param sy0         top
 * @param sx1         right; where it is not beyond sx0 a step is 1
 * @param sy1         bottom; where it is not beyond sy0 a step is 1
 * @param flags       BMP_FIELD draws the lines of BMP_FIELD_ODD's parity only; of a source that was created as
 *                    interlaced (create_flags 2 or 3) it samples that field, whose lines are taken at their places in
 *                    the frame. BMP_FIELD_ODD only with BMP_FIELD
 * @pre dx1 and dy1 lie inside dest and sx1 and sy1 inside src; src has dest's format; weight_map has dest's size and
 *      16-bit pixels. dest, weight_map and src are distinct. Coordinates lie within +-2^18 pixels and 2^19 lines;
 *      others, and what is not a number, give some picture or none, inside dest and weight_map. Some 110 KB of stack
 *      are free. */
void BMP_CALL bmp_map_rect(Bitmap* dest, Bitmap* weight_map, float dx0, float dy0, float dx1, float dy1,
                           const Bitmap* src, const int32_t* src_size, float sx0, float sy0, float sx1, float sy1,
                           uint32_t flags);

#ifdef __cplusplus
}
#endif

#endif /* ZEPBMP_H */
