#include "corpus.h"

#include <algorithm>
#include <cstdio>

#include "library.h"
#include "polygons.h"
#include "rects.h"

namespace zepbmp::test {
namespace {

/// 64-bit FNV-1a.
class Hash {
public:
    void add(std::span<const uint8_t> bytes) {
        for (const uint8_t byte : bytes)
            value_ = (value_ ^ byte) * 0x100000001b3;
    }
    void add(uint32_t word) {
        for (int k = 0; k < 4; ++k)
            value_ = (value_ ^ (word >> 8 * k & 0xff)) * 0x100000001b3;
    }
    void add(const OwnedBitmap& bitmap) { add(lines_of(bitmap.get())); }
    uint64_t value() const { return value_; }

private:
    uint64_t value_ = 0xcbf29ce484222325;
};

struct Size {
    int width, height;
};

Size some_size(Random& random, int call) {
    return call % 16 == 0 ? Size{random.between(300, 720), random.between(2, 30)}
                          : Size{random.between(1, 90), random.between(1, 12)};
}

OwnedBitmap noise(Random& random, Size size, int format) {
    return make_noise(size.width, size.height, format, random.next());
}

OwnedBitmap some_weights(Random& random, Size size) {
    OwnedBitmap map = make_bitmap(size.width, size.height, BMP_FMT_PWRW);
    fill_weights(random, lines_of(map.get()));
    return map;
}

OwnedBitmap some_masks(Random& random, Size size) {
    OwnedBitmap map = make_bitmap(size.width, size.height, BMP_FMT_A8);
    fill_masks(random, lines_of(map.get()));
    return map;
}

uint32_t some_field(Random& random) { return random.pick({0u, 0u, 1u, 2u, 3u}); }

constexpr int kCalls = 160;

// Each random value is drawn in a statement of its own: compilers differ in the order in which they evaluate arguments.

uint64_t bitmaps() {
    Hash hash;
    Random random(11);
    for (int call = 0; call < kCalls; ++call) {
        const int width = random.between(0, 300), height = random.between(0, 40), format = random.between(0, 9);
        const uint32_t flags = BMP_CREATE_ZERO | random.below(4);
        const OwnedBitmap bitmap = make_bitmap(width, height, format, flags);
        for (const uint32_t word :
             {static_cast<uint32_t>(bitmap->width), static_cast<uint32_t>(bitmap->height),
              static_cast<uint32_t>(bitmap->pitch), static_cast<uint32_t>(bitmap->bit_count), bitmap->fourcc,
              bitmap->interlace, bitmap->reserved, static_cast<uint32_t>(bitmap->bytes_per_pixel), bitmap->create_flags,
              bitmap->format})
            hash.add(word);
        const int x = random.between(-100, 400), y = random.between(-100, 100);
        hash.add(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(library().pointer(bitmap.get(), x, y)) -
                                       reinterpret_cast<uintptr_t>(bitmap->pixels)));
        hash.add(bitmap);
    }
    return hash.value();
}

uint64_t copies() {
    Hash hash;
    Random random(12);
    for (int call = 0; call < kCalls; ++call) {
        const int format = random.between(0, 7);
        const Size size = some_size(random, call), other = some_size(random, call + 1);
        const OwnedBitmap a = noise(random, size, format), b = noise(random, size, format),
                          c = noise(random, other, format);
        library().clear(a.get(), some_field(random));
        hash.add(a);
        library().copy(a.get(), b.get(), some_field(random));
        hash.add(a);
        const OwnedBitmap& source = random.chance(50) ? a : b;
        library().interporate(a.get(), source.get(), random.below(4));
        hash.add(a);
        const int x = random.between(-20, 60), y = random.between(-3, 9), width = random.between(1, 90),
                  height = random.between(1, 14);
        const int src_x = random.between(-20, 60), src_y = random.between(-3, 9);
        library().blt(a.get(), x, y, width, height, c.get(), src_x, src_y, some_field(random));
        hash.add(a);
        library().blt(b.get(), x, y, width, height, b.get(), src_x, src_y, some_field(random));
        hash.add(b);
    }
    return hash.value();
}

uint64_t drawings() {
    Hash hash;
    Random random(17);
    for (int call = 0; call < kCalls; ++call) {
        const Size size = some_size(random, call);
        for (const int format : {BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_RGB8}) {
            const OwnedBitmap bitmap = noise(random, size, format);
            const int left = random.between(-20, 90), top = random.between(-3, 12), right = random.between(-20, 720),
                      bottom = random.between(-3, 30);
            const uint32_t color = static_cast<uint32_t>(random.next()), mode = random.pick({0u, 0u, 16u, 32u});
            library().draw_rect(bitmap.get(), left, top, right, bottom, color, mode);
            const int x0 = random.between(0, size.width - 1), y0 = random.between(0, size.height - 1),
                      x1 = random.between(0, size.width - 1), y1 = random.between(0, size.height - 1);
            library().draw_line(bitmap.get(), x0, y0, x1, y1, color, random.below(8) * 16);
            hash.add(bitmap);
            hash.add(library().translate_color(nullptr, color));
        }
    }
    return hash.value();
}

enum class Mix { kWeights, kMasks, kLevel, kColor, kBand };

uint64_t compose(int format, Mix mix) {
    Hash hash;
    Random random(13 + static_cast<uint64_t>(format) * 10 + static_cast<uint64_t>(mix));
    for (int call = 0; call < kCalls; ++call) {
        const Size size = some_size(random, call);
        const OwnedBitmap dest = noise(random, size, format), a = noise(random, size, format),
                          b = noise(random, size, format);
        const OwnedBitmap w1 = some_weights(random, size), w2 = some_weights(random, size),
                          masks = some_masks(random, size);
        const uint32_t field = some_field(random), color = static_cast<uint32_t>(random.next());
        const int level = call % 3 ? random.between(0, 4096) : random.pick({0, 1, 2048, 4095, 4096, 5000, -1, 32768});
        const OwnedBitmap& first = random.chance(20) ? dest : a;
        switch (mix) {
            case Mix::kWeights: library().compose(dest.get(), first.get(), b.get(), w1.get(), field); break;
            case Mix::kMasks: library().compose(dest.get(), first.get(), b.get(), masks.get(), field); break;
            case Mix::kLevel:
                library().compose(dest.get(), first.get(), b.get(), BMP_INTEGER(level), field | BMP_COMPOSE_LEVEL);
                break;
            case Mix::kColor:
                library().compose_color(dest.get(), first.get(), nullptr, w1.get(), nullptr, color, field);
                break;
            case Mix::kBand:
                library().compose_color(dest.get(), first.get(), b.get(), w1.get(), w2.get(), color, field);
                break;
        }
        hash.add(dest);
    }
    return hash.value();
}

/// A whole number of 1/4096 pixels: the same float everywhere.
float exact(Random& random, int low, int high) {
    return static_cast<float>(random.between(low * 4096, high * 4096)) / 4096;
}

uint64_t rects() {
    Hash hash;
    Random random(14);
    for (int call = 0; call < 2 * kCalls; ++call) {
        const Size size = some_size(random, call);
        const OwnedBitmap map = some_weights(random, size);
        const float x = exact(random, -20, 70), y = exact(random, -5, 10), width = exact(random, 0, 90),
                    height = exact(random, 0, 20);
        const float radius_x = exact(random, 0, 40), radius_y = exact(random, 0, 15);
        const uint32_t shape = random.pick({0u, 0x10u, 0x30000u, 0x810000u});
        const uint32_t field = some_field(random);
        library().alpha_rect(map.get(), x, y, width, height, radius_x, radius_y, shape | field);
        hash.add(map);
    }
    return hash.value();
}

uint64_t circles() {
    Hash hash;
    Random random(15);
    for (int call = 0; call < 2 * kCalls; ++call) {
        const Size size = some_size(random, call);
        const OwnedBitmap map = some_weights(random, size);
        const float cx = exact(random, -20, 100), cy = exact(random, -5, 20),
                    radius = exact(random, 0, call % 16 ? 60 : 400);
        const float feather = call % 4 == 0 ? 0 : exact(random, 0, call % 16 ? 40 : 300);
        const float aspect = random.pick({1.0f, 2.0f, 0.5f, 1.0625f, 1.421875f});
        const uint32_t ramp = random.pick({0u, 0x40000u}), field = some_field(random);
        library().alpha_circle(map.get(), cx, cy, radius, feather, aspect, ramp | field);
        hash.add(map);
    }
    return hash.value();
}

/// 3 to 7 corners anywhere, or a rectangle of the source on a turned rectangle.
Polygon some_polygon(Random& random, Size dest, Size source) {
    Polygon polygon;
    if (random.chance(30)) {
        const int corners = random.between(3, 7);
        for (int i = 0; i < corners; ++i) {
            const float u = exact(random, -4, source.width + 4), v = exact(random, -4, source.height + 4);
            const float x = exact(random, -8, dest.width + 8), y = exact(random, -4, dest.height + 4);
            polygon.push_back({u, v, 1, x, y});
        }
        return polygon;
    }
    const float left = exact(random, -8, dest.width), top = exact(random, -4, dest.height);
    // Not so wide that a ratio's product would need more than a float's 24 bits.
    const float across = exact(random, 1, std::min(dest.width + 8, 400)), down = exact(random, 1, dest.height + 4);
    const float lean_x = exact(random, -4, 4), lean_y = exact(random, -4, 4);
    const float u = exact(random, -2, 4), v = exact(random, -2, 2);
    const float width = across * random.pick({0.5f, 1.0f, 1.0f, 1.5f, 2.25f, 3.0f, 6.0f}),
                height = down * random.pick({0.5f, 1.0f, 1.0f, 1.25f, 1.75f, 3.0f});
    polygon = {{u, v, 1, left, top},
               {u + width, v, 1, left + across, top + lean_y},
               {u + width, v + height, 1, left + across + lean_x, top + down + lean_y},
               {u, v + height, 1, left + lean_x, top + down}};
    return polygon;
}

/// Weights whose products and quotients are not exact.
void some_perspective(Random& random, Polygon& polygon) {
    for (BmpVertex& corner : polygon)
        corner.w = 0.25f + exact(random, 0, 2);
}

OwnedBitmap some_source(Random& random, Size size, int format) {
    OwnedBitmap bitmap = make_bitmap(size.width, size.height, format, BMP_CREATE_ZERO | random.pick({0u, 0u, 2u, 3u}));
    fill_pixels(random, lines_of(bitmap.get()));
    return bitmap;
}

enum class Mapping { kAffine, kPerspective, kDepth, kTint, kAntialiased, kSolid };

uint64_t polygons(Mapping mapping) {
    Hash hash;
    Random random(16 + static_cast<uint64_t>(mapping));
    for (int call = 0; call < 2 * kCalls; ++call) {
        const Size size = some_size(random, call), source_size = {random.between(1, 120), random.between(1, 40)};
        const bool colour_only = mapping == Mapping::kDepth || mapping == Mapping::kTint || mapping == Mapping::kSolid;
        const int format = colour_only ? random.pick({BMP_FMT_RGBQ, BMP_FMT_YUY2})
                                       : random.pick({BMP_FMT_RGBQ, BMP_FMT_YUY2, BMP_FMT_PWRW});
        const OwnedBitmap dest = noise(random, size, format), depth = make_depth(size.width, size.height, 0),
                          texture = some_source(random, source_size, mapping == Mapping::kTint ? BMP_FMT_A8 : format);
        const OwnedBitmap plane = random.chance(50) ? some_weights(random, size) : some_masks(random, size);
        Polygon polygon = some_polygon(random, size, source_size);
        const bool affine = mapping == Mapping::kAffine || (mapping == Mapping::kAntialiased && random.chance(50));
        if (!affine)
            some_perspective(random, polygon);
        const uint32_t field = some_field(random), color = static_cast<uint32_t>(random.next());
        const int level = random.chance(50) ? 4096 : random.between(0, 4096);
        MapArguments arguments = {.dst = dest.get(), .tex_a = texture.get(), .flags = field};
        if (random.chance(30))
            arguments.dst2 = plane.get();
        switch (mapping) {
            case Mapping::kAffine:
            case Mapping::kPerspective: break;
            case Mapping::kDepth: arguments.aux = depth.get(); break;
            case Mapping::kTint:
                arguments.tex_a = BMP_INTEGER(color);
                arguments.tex_b = texture.get();
                arguments.flags |= BMP_MAP_EXTRA;
                break;
            case Mapping::kAntialiased: arguments.flags |= BMP_MAP_ANTIALIAS; break;
            case Mapping::kSolid:
                arguments.tex_a = BMP_INTEGER(color);
                arguments.tex_b = BMP_INTEGER(level);
                arguments.flags |= BMP_MAP_EXTRA | BMP_MAP_SOLID;
                break;
        }
        if (mapping != Mapping::kAntialiased && random.chance(25))
            arguments.flags |= BMP_MAP_NO_FILTER;
        map_polygon(arguments, polygon);
        if (mapping == Mapping::kDepth) {  // a second one, partly behind the first
            Polygon other = some_polygon(random, size, source_size);
            some_perspective(random, other);
            map_polygon(arguments, other);
        }
        hash.add(dest);
        hash.add(plane);
        hash.add(depth);
    }
    return hash.value();
}

struct Extent {
    float start, end;
};

/// Part of `size` pixels; now and then its start lies outside.
Extent some_extent(Random& random, int size) {
    const float end = random.chance(50) ? static_cast<float>(size) : exact(random, 0, size);
    switch (random.below(4)) {
        case 0: return {0, end};
        case 1: return {exact(random, -size, 0), end};
        case 2: return {exact(random, -size, 2 * size), end};
        default: return {exact(random, 0, static_cast<int>(end)), end};
    }
}

uint64_t mapped_rects(int format) {
    Hash hash;
    Random random(30 + static_cast<uint64_t>(format));
    for (int call = 0; call < 2 * kCalls; ++call) {
        const Size size = some_size(random, call);
        const int ratio = random.pick({1, 1, 2, 2, 3, 8}), rows = random.pick({1, 1, 2, 3});
        const Size source_size = {std::min(900, size.width * ratio), size.height * rows};
        const OwnedBitmap dest = noise(random, size, format), map = some_weights(random, size),
                          src = some_source(random, source_size, format);
        if (random.chance(50))
            library().clear(map.get(), 0);
        for (int mapping = 0; mapping < 2; ++mapping) {  // the second one meets the first one's weights
            Extent dx = some_extent(random, size.width), dy = some_extent(random, size.height);
            Extent sx = some_extent(random, source_size.width), sy = some_extent(random, source_size.height);
            const bool all = random.chance(30), same_scale = random.chance(30);
            if (all) {
                dx = {0, static_cast<float>(size.width)};
                dy = {0, static_cast<float>(size.height)};
                sx = {0, static_cast<float>(source_size.width)};
                sy = {0, static_cast<float>(source_size.height)};
            }
            if (same_scale)
                sx.start = sx.end - (dx.end - dx.start);
            const uint32_t field = some_field(random);
            map_rect({.dest = dest.get(),
                      .weight_map = format == BMP_FMT_RGB8 ? nullptr : map.get(),
                      .to = {dx.start, dy.start, dx.end, dy.end},
                      .src = src.get(),
                      .from = {sx.start, sy.start, sx.end, sy.end},
                      .flags = field});
        }
        hash.add(dest);
        hash.add(map);
    }
    return hash.value();
}

}  // namespace

std::vector<Digest> digest_corpus(bool plain) {
    const std::string arithmetic = plain ? "_plain" : "_vector";
    return {
        {"bitmaps", bitmaps()},
        {"copies", copies()},
        {"drawings", drawings()},
        {"compose_yuy2_weights" + arithmetic, compose(BMP_FMT_YUY2, Mix::kWeights)},
        {"compose_yuy2_masks" + arithmetic, compose(BMP_FMT_YUY2, Mix::kMasks)},
        {"compose_rgbq_weights" + arithmetic, compose(BMP_FMT_RGBQ, Mix::kWeights)},
        {"compose_rgbq_masks" + arithmetic, compose(BMP_FMT_RGBQ, Mix::kMasks)},
        {"compose_level" + arithmetic, compose(BMP_FMT_A8, Mix::kLevel)},
        {"compose_color_yuy2" + arithmetic, compose(BMP_FMT_YUY2, Mix::kColor)},
        {"compose_color_yuy2_band" + arithmetic, compose(BMP_FMT_YUY2, Mix::kBand)},
        {"compose_color_rgbq", compose(BMP_FMT_RGBQ, Mix::kColor)},
        {"compose_color_rgbq_band" + arithmetic, compose(BMP_FMT_RGBQ, Mix::kBand)},
        {"alpha_rect", rects()},
        {"alpha_circle", circles()},
        {"map_rect_rgb8", mapped_rects(BMP_FMT_RGB8)},
        {"map_rect_rgbq", mapped_rects(BMP_FMT_RGBQ)},
        {"map_rect_yuy2", mapped_rects(BMP_FMT_YUY2)},
        {"polygons_affine", polygons(Mapping::kAffine)},
        {"polygons_perspective", polygons(Mapping::kPerspective)},
        {"polygons_depth", polygons(Mapping::kDepth)},
        {"polygons_tint", polygons(Mapping::kTint)},
        {"polygons_antialiased", polygons(Mapping::kAntialiased)},
        {"polygons_solid", polygons(Mapping::kSolid)},
    };
}

std::string to_line(const Digest& digest) {
    char text[100];
    std::snprintf(text, sizeof text, "%-32s %08lx%08lx\n", digest.group.c_str(),
                  static_cast<unsigned long>(digest.hash >> 32), static_cast<unsigned long>(digest.hash & 0xffffffff));
    return text;
}

}  // namespace zepbmp::test
