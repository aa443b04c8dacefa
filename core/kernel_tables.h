/// \file
/// The kernel tables: filled once at load, before any export can run, and only read afterwards. Load fills them from a
/// constructor, so nothing in the library may have a dynamic initialiser: it could run later and undo that.
///
/// The selection tables, which say what goes where, stand with the kernels that they select from:
/// compose/compose_table.cpp, mapping/polygon/span_table.cpp, mapping/polygon/cover_table.cpp,
/// mapping/rect/area_table.cpp, core/line_table.cpp, shapes/shape_table.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/cpu.h"

namespace zepbmp {

constexpr int kWidestRegister = 64;  ///< bytes

/// Which kernels a fill takes. `level` picks a column of the selection table. At level 4 `register_bytes` (8, 16, 32,
/// 64) picks among the kernels that write the same bytes; 8 is the printed column itself. More than this build or
/// this machine has means as much as it has.
void fill_compose_slots(int level, int register_bytes = kWidestRegister);
void fill_span_groups(int level, int register_bytes = kWidestRegister);
void fill_cover_kernels(int level, int register_bytes = kWidestRegister);
void fill_area_kernels(int level, int register_bytes = kWidestRegister);
void fill_line_kernels(int level, int register_bytes = kWidestRegister);
void fill_shape_kernels(int level, int register_bytes = kWidestRegister);

/// All of the above.
void fill_kernel_tables(int level, int register_bytes = kWidestRegister);

/// What process attach does: measures, fills every table, sets the streaming threshold.
void attach_process();

/// The widest registers, in bytes, for which this build has kernels and this machine support. Measured once.
int usable_register_bytes();

/// The columns of a selection table: one for each level, then, for level 4 with registers of 16, 32 and 64 bytes,
/// three whose kernels write the same bytes as the column of level 4.
constexpr int kKernelColumns = kCpuLevels + 3;
int kernel_column(int level, int register_bytes);

// ---------------------------------------------------------------- composition

/// Every kernel processes `lines` lines of `count` pixels (level kernels: bytes). Pointers are those of the first
/// pixel; after a line each has advanced by what it processed, then its skip (bytes, signed) is added. Kernels never
/// touch anything past `count`; count or lines of 0 touch nothing; dst may be one of the sources.
using ComposeMixKernel = void(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                              ptrdiff_t src1_skip, const uint8_t* src2, ptrdiff_t src2_skip, const void* mask,
                              ptrdiff_t mask_skip);
using ComposeLevelKernel = void(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                                ptrdiff_t src1_skip, int32_t weight1, const uint8_t* src2, ptrdiff_t src2_skip,
                                int32_t level);
using ComposeBandKernel = void(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                               ptrdiff_t src1_skip, const uint8_t* src2, ptrdiff_t src2_skip, const uint16_t* mask1,
                               ptrdiff_t mask1_skip, const uint16_t* mask2, ptrdiff_t mask2_skip, uint32_t color);
using ComposeColorKernel = void(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src,
                                ptrdiff_t src_skip, const uint16_t* mask, ptrdiff_t mask_skip, uint32_t color);

/// The twelve slots, in order.
struct ComposeSlots {
    ComposeMixKernel* rgbq_w16;
    ComposeMixKernel* rgbq_a8;
    ComposeMixKernel* yuy2_w16;
    ComposeMixKernel* yuy2_w16_aligned;
    ComposeMixKernel* yuy2_a8;
    ComposeMixKernel* yuy2_a8_aligned;
    ComposeLevelKernel* level;
    ComposeLevelKernel* level_aligned;
    ComposeBandKernel* color_rgbq_band;
    ComposeBandKernel* color_yuy2_band;
    ComposeColorKernel* color_rgbq;
    ComposeColorKernel* color_yuy2;
};
extern ComposeSlots compose_slot;

// ---------------------------------------------------------------- polygon spans

/// What the span kernels sample. Positions are in 16.16 units, 65536 to a texel; column and row of a sample are its
/// integer parts.
struct SpanTexture {
    const uint8_t* pixels;  ///< texel (0, 0)
    ptrdiff_t pitch;        ///< bytes from a line to the next
    int32_t columns, rows;  ///< 1..32768
    float u_max, v_max;     ///< the farthest position; every tap of the filter with a weight lies inside from there
};

/// One span of one line. Single precision, one rounding for each operation, in the order written.
///
/// An affine kernel samples at u = x * du + u_start. The others compute w = x * dw + w_start and q = 1 / w, and sample
/// at u = (x * du + u_start) * q + u_off; v alike. A position that is not above 0, or not a number, becomes 0, one
/// above the maximum the maximum; then it is truncated.
struct Span {
    uint8_t* line;        ///< pixel 0 of the destination line
    int32_t first, last;  ///< the pixels to write
    float du, u_start;    ///< 16.16 units; of u times w where w is used
    float dv, v_start;
    float dw, w_start;
    float u_off, v_off;
    float* depth;    ///< of the depth groups: one value a pixel, pixel 0 first
    uint32_t color;  ///< of the tint groups
    /// Hints, bytes: from a sample to one that some later line needs, from a pixel and from its depth to those of a
    /// later line.
    ptrdiff_t later_texels, later_pixels, later_depths;
};

/// Writes pixels first to last of the line; touches nothing where first > last. Bytes of the first and the last YUY2
/// pair that are not the span's may be written again as they were. The destination has the texture's layout, under a
/// tint its own.
using SpanKernel = void(const SpanTexture& texture, const Span& span);
constexpr int kSpanBlock = 256;  ///< pixels that vector kernels take at a time
constexpr int kSpanFilters = 21;
constexpr int kSpanGroups = 10;

enum SpanGroup : int {
    kSpanYuy2Affine,
    kSpanYuy2Persp,
    kSpanRgbqAffine,
    kSpanRgbqPersp,
    kSpanPwrwAffine,
    kSpanPwrwPersp,
    kSpanYuy2Depth,
    kSpanRgbqDepth,
    kSpanA8TintYuy2,
    kSpanA8TintRgbq,
};
/// Filter 0 takes the nearest sample (under a tint a bilinear one); filter 1 + 5 * rows + columns averages the box of
/// those two classes, see mapping/polygon/filters.h.
extern SpanKernel* span_group[kSpanGroups][kSpanFilters];

// ---------------------------------------------------------------- polygon coverage

/// An edge that runs from x = a to x = b, a <= b, from the top of a line to its bottom or the other way.
struct CoverRamp {
    int32_t a, b;  ///< 1/4096 pixel
    float k;       ///< 4096 / (b - a), or 0 where a = b
};

constexpr int32_t kCoverEnd = 8;  ///< pixels that CoverKernels::ends writes at either end

/// Coverages are 0..4096. Everything blends as d += (s - d) * coverage >> 12; a `level`, 0..4096, scales the coverage
/// first: coverage * level >> 12.
///
/// A pixel has one coverage for all its bytes; in YUY2, where the first pixel begins a pair, chroma takes the mean of
/// its pair's two, cut, and that of the pair's first pixel where `pixels` ends with it. src, where there is one, has
/// the destination's layout. Nothing but these pixels and their chroma is written.
struct CoverKernels {
    /// coverage[x] for x = first .. end-1: the area of pixel x right of the ramp, a < b. All these pixels touch it.
    void (*ramp)(uint16_t* coverage, int32_t first, int32_t end, const CoverRamp& ramp);
    /// Both ends of what two edges enclose: for kCoverEnd pixels from `first` on the area right of `left`, for as many
    /// from `last` on, last >= first + kCoverEnd, the area left of `right`. These pixels may lie beside the edge.
    void (*ends)(uint16_t* coverage, int32_t first, const CoverRamp& left, int32_t last, const CoverRamp& right);

    using Blend = void(uint8_t* dst, const uint8_t* src, const uint16_t* coverage, int32_t pixels);
    Blend* blend_rgbq;
    Blend* blend_yuy2;
    Blend* blend_pwrw;

    /// One value for all: a pixel in RGBQ, the four bytes of a pair in YUY2, a word in PWRW, a byte in A8.
    using Paint = void(uint8_t* dst, uint32_t value, const uint16_t* coverage, int32_t pixels, int32_t level);
    Paint* paint_rgbq;
    Paint* paint_yuy2;
    Paint* paint_pwrw;
    Paint* paint_a8;

    /// Full coverage at a level below 4096. `value` is repeated: four bytes, or a word.
    void (*fade_bytes)(uint8_t* dst, uint32_t value, int32_t bytes, int32_t level);
    void (*fade_words)(uint8_t* dst, uint32_t value, int32_t words, int32_t level);
};
extern CoverKernels cover_kernels;

// ---------------------------------------------------------------- stores

/// How a kernel stores: through the caches, or past them. Streaming is for calls that touch more than the caches hold.
enum StoreKind : int { kStoreCached, kStoreStreamed };
constexpr int kStoreKinds = 2;
constexpr int kCacheLineBytes = 64;

// ---------------------------------------------------------------- area resampling

/// The source pixels (or lines) under a destination pixel (or line), and how much of it each covers: the first one and
/// the last one their own weights, those between them all the same. Where there is only one, last_weight is 0.
struct AreaSpan {
    int32_t first, count;  ///< count is 1 or more
    int32_t first_weight, last_weight;
};

/// The weight of a span's i-th one, where those inside have `inner_weight`; 0 behind the last one.
static inline int32_t weight_of(const AreaSpan& span, int32_t i, int32_t inner_weight) {
    return i >= span.count ? 0 : i == 0 ? span.first_weight : i + 1 == span.count ? span.last_weight : inner_weight;
}

/// All of a span's weights.
static inline int32_t units_of(const AreaSpan& span, int32_t inner_weight) {
    return span.first_weight + (span.count > 2 ? (span.count - 2) * inner_weight : 0) + span.last_weight;
}

/// What a destination line is made of. Its weights add up to at most 2048.
struct AreaLines {
    const uint8_t* pixels;  ///< pixel 0 of the source's line 0
    ptrdiff_t pitch;
    AreaSpan span;
    int32_t inner_weight;
    const uint8_t* end;    ///< of the source's last line, behind its last pixel: nothing is read from there on
    int32_t later, ahead;  ///< a hint: the lines that will be needed next, `later` .. `later + ahead - 1`
};

constexpr int32_t kAreaPixels = 1024;  ///< that a kernel gets at a time

/// What vector kernels can take of source pixels under a run; other runs they draw pixel by pixel.
constexpr int32_t kAreaColumns = 2560;
/// Each pixel's source pixels are weighed in blocks of so many.
constexpr int32_t kAreaBlockColumns = 4;
/// Blocks of a run's pixels, the number of which counts as a multiple of those that fill a register.
constexpr int32_t kAreaBlocks = 1024;
/// The pixels of RGB8 that fill the widest register.
constexpr int32_t kAreaTogether = 64;

/// What destination pixels of one line are made of. A pixel's weights add up to 4096, a pair's to 8192.
struct AreaColumns {
    int32_t count;          ///< of pixels, at most kAreaPixels
    const AreaSpan* spans;  ///< one a pixel
    int32_t inner_weight;
    const AreaSpan* pair_spans;  ///< of YUY2: one for each pair of pixels, in pairs of the source
    int32_t inner_pair_weight;
};

/// Where a run of pixels goes, on one line.
struct AreaTarget {
    uint8_t* pixels;
    uint16_t* weights;       ///< one a pixel, to become 4096; null in RGB8
    ptrdiff_t later_pixels;  ///< a hint: bytes to the pixels that the next call draws
    StoreKind store;
};

/// A kernel's own memory. What plan() leaves there serves for any number of lines.
struct AreaScratch;

/// Each byte becomes sum(byte * column's weight * line's weight) >> 23, the sums being exact. RGBQ leaves byte 3 as it
/// is. YUY2 is rounded to nearest, luma as (sum + 2^22) >> 23, chroma, over its pair, as (sum + 2^23) >> 24; the first
/// pixel begins a pair, and there is no half one.
struct AreaKernels {
    void (*plan_rgbq)(const AreaColumns& columns, AreaScratch& scratch);
    void (*plan_yuy2)(const AreaColumns& columns, AreaScratch& scratch);
    void (*plan_rgb8)(const AreaColumns& columns, AreaScratch& scratch);
    using Draw = void(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns,
                      AreaScratch& scratch);
    Draw* rgbq;
    Draw* yuy2;
    Draw* rgb8;
};
extern AreaKernels area_kernels;

// ---------------------------------------------------------------- lines of bytes

/// One line each. `bytes` of 0 touches nothing; no alignment is asked of any address.
struct LineKernels {
    /// `value` repeated. Its period (1, 2 or 4 bytes; a shorter one is given as often as it fits) divides dst and
    /// bytes.
    void (*fill[kStoreKinds])(uint8_t* dst, size_t bytes, uint32_t value);
    /// dst and src are apart, or the same.
    void (*copy[kStoreKinds])(uint8_t* dst, const uint8_t* src, size_t bytes);
    /// between[i] = (above[i] + below[i] + 1) >> 1 and copied[i] = below[i]. `copied` may be `below`.
    void (*interpolate[kStoreKinds])(uint8_t* between, uint8_t* copied, const uint8_t* above, const uint8_t* below,
                                     size_t bytes);
    /// dst[i] = (dst[i] & keep) ^ flip.
    void (*combine)(uint8_t* dst, size_t bytes, uint8_t keep, uint8_t flip);
    /// Orders streamed stores before everything after: once, at the end of a call that streamed.
    void (*end_stream)();
    /// Asks for the memory of some lines that will soon be needed. A hint: any address will do.
    void (*prefetch)(const uint8_t* first, size_t bytes, ptrdiff_t pitch, int32_t lines);
};
extern LineKernels line_kernels;

/// A call that touches more bytes than this streams its stores. Set at load to the second-level cache's size: what a
/// call leaves there would push itself out. Tests set 0 or SIZE_MAX.
extern size_t stream_threshold_bytes;

/// Static, because files for wide registers include this header: a shared inline function would be kept once by the
/// linker, maybe in its wide form. Nothing here may be plain `inline`.
static inline StoreKind store_kind(size_t bytes_touched) {
    return bytes_touched > stream_threshold_bytes ? kStoreStreamed : kStoreCached;
}

// ---------------------------------------------------------------- shapes

constexpr int kRampSteps = 1024;

/// The soft edge of a circle, on one line. The pixel at x, whose centre lies d = sqrt((x - cx + 0.5)^2 + dy^2) from the
/// circle's, gets table[k], k = trunc((radius - d) * scale + 0.5) held to 0..kRampSteps; all in double precision.
struct RampLine {
    double cx;              ///< centre, pixels
    double dy;              ///< from the centre to the line's middle, pixels
    double radius;          ///< outer radius, pixels
    double scale;           ///< ramp steps per pixel
    const uint16_t* table;  ///< kRampSteps + 1 weights and one word more, which wide loads touch
    bool linear;            ///< table[k] is 4 * k
};

/// A soft edge where it is supersampled, on one line: a pixel gets a quarter, truncated, of the sum over its 2 x 2
/// samples, each a quarter or three quarters into it. A sample at squared distance d2 counts 4096 where d2 <=
/// inner_radius_squared, else 0 where d2 > radius_squared, else the ramp's weight there.
struct SoftEdgeLine {
    RampLine ramp;
    double radius_squared, inner_radius_squared;
    double dy_squared[2];  ///< of the two rows of samples
};

struct ShapeKernels {
    /// weights[i] += v, modulo 2^16
    void (*add_run)(uint16_t* weights, int32_t count, int32_t v);
    /// weights[i] = max(weights[i], v), 0 <= v <= 65535
    void (*max_run)(uint16_t* weights, int32_t count, int32_t v);
    /// weights[x] for x = first .. end-1 of the line that starts at `weights`
    void (*ramp)(uint16_t* weights, int32_t first, int32_t end, const RampLine& line);
    void (*soft_edge)(uint16_t* weights, int32_t first, int32_t end, const SoftEdgeLine& line);
};
extern ShapeKernels shape_kernels;

}  // namespace zepbmp
