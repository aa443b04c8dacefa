/// \file
/// Any bytes become a call of bmp_map_polygon that keeps its caller's duties. It is made twice, with the plain tables
/// and with others; the pictures have to agree to the last byte.
///
/// polygon_seeds.py writes the same layout.
#include <cmath>
#include <cstdint>
#include <vector>

#include "fuzz/harness.h"
#include "fuzz/picture.h"

namespace {

using namespace zepbmp;
using namespace zepbmp::fuzz;

/// What a call can write.
struct Target {
    Target(int width, int height, int format, int plane_format)
        : dest(width, height, format), plane(width, height, plane_format), depth(width, height, BMP_FMT_QUAD3) {}

    void fill(uint32_t seed, uint32_t depth_kind) {
        dest.fill_noise(seed);
        plane.fill_noise(seed + 1);
        switch (depth_kind) {
            case 0: depth.fill_values(0.0f); break;
            case 1: depth.fill_values(1.0f); break;
            case 2: depth.fill_values(-INFINITY); break;
            default: depth.fill_noise(seed + 2); break;
        }
    }

    void copy(const Target& other) {
        dest.copy(other.dest);
        plane.copy(other.plane);
        depth.copy(other.depth);
    }

    Picture dest, plane, depth;
};

constexpr uint32_t kFlags =
    BMP_FIELD_ODD | BMP_FIELD | BMP_MAP_EXTRA | BMP_MAP_SOLID | BMP_MAP_ANTIALIAS | BMP_MAP_NO_FILTER;

/// Mostly small; from 248 on, beyond the 4096 columns at which a float no longer holds every 4096th of a position.
int source_size(uint32_t byte) { return static_cast<int>(byte < 248 ? byte % 72 : 4093 + (byte - 248)); }

/// Mostly in 64ths; now and then any bits, for the source position and weight alone or for all five. An edge to a far
/// place is walked line by line, so those are rare.
BmpVertex corner(Input& input, float scale) {
    const uint32_t kind = input.take(1) % 16;
    const bool any_source = kind == 1 || kind == 2, any_place = kind == 1;
    BmpVertex v;
    v.u = any_source ? input.bits() : input.fixed() * scale;
    v.v = any_source ? input.bits() : input.fixed() * scale;
    v.w = any_source ? input.bits() : input.fixed();
    v.x = any_place ? input.bits() : input.fixed();
    v.y = any_place ? input.bits() : input.fixed();
    return v;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const uint32_t formats = input.take(1), roles = input.take(1), flags = input.take(2) & kFlags;
    const int width = static_cast<int>(input.take(1) % 48), height = static_cast<int>(input.take(1) % 12);
    const int source_width = source_size(input.take(1));
    const int source_height = source_width > 100 ? static_cast<int>(input.take(1) % 4) : source_size(input.take(1));
    const uint32_t color = input.take(4), seed = input.take(1);
    const int level = static_cast<int16_t>(input.take(2));
    const Tables tables = other_tables(input);

    const int texture_format = formats & 7, dest_format = formats >> 3 & 7;
    constexpr int kPlaneFormats[] = {BMP_FMT_A8, BMP_FMT_PWRW, BMP_FMT_RGBQ, BMP_FMT_YUY2};
    const int plane_format = kPlaneFormats[formats >> 6];
    const bool with_plane = roles & 1, only_second = roles & 2, with_depth = roles & 4, second_texture = roles & 8;

    Picture texture(source_width, source_height, texture_format, roles >> 4 & 3);
    texture.fill_noise(seed);
    Picture texture_before(source_width, source_height, texture_format);
    texture_before.copy(texture);

    std::vector<BmpVertex> polygon;
    const float scale = static_cast<float>(1 << (roles >> 6)) / 2;
    while (!input.empty() && polygon.size() < 200)
        polygon.push_back(corner(input, scale));

    Target plain(width, height, dest_format, plane_format), other(width, height, dest_format, plane_format),
        before(width, height, dest_format, plane_format);
    before.fill(seed, color & 3);
    const auto draw = [&](Target& target) {
        target.copy(before);
        const bool extra = flags & BMP_MAP_EXTRA, solid = extra && (flags & BMP_MAP_SOLID);
        const void* const bitmap = texture.bitmap();
        const void* const tex_a = extra ? BMP_INTEGER(static_cast<int32_t>(color)) : second_texture ? nullptr : bitmap;
        const void* const tex_b = solid ? BMP_INTEGER(level) : extra || second_texture ? bitmap : nullptr;
        bmp_map_polygon(only_second ? nullptr : target.dest.bitmap(),
                        only_second  ? target.dest.bitmap()
                        : with_plane ? target.plane.bitmap()
                                     : nullptr,
                        with_depth ? target.depth.bitmap() : nullptr, tex_a, tex_b, polygon.data(),
                        static_cast<int32_t>(polygon.size()), flags);
    };
    kPlainTables.select();
    draw(plain);
    tables.select();
    draw(other);

    if (!plain.dest.same(other.dest))
        fail("the destination depends on the tables");
    if (!plain.plane.same(other.plane))
        fail("the second plane depends on the tables");
    if (!plain.depth.same(other.depth))
        fail("the depth buffer depends on the tables");
    if (!plain.dest.same_padding(before.dest) || !plain.plane.same_padding(before.plane) ||
        !plain.depth.same_padding(before.depth))
        fail("bytes behind the end of a line have changed");
    if (!with_depth && !plain.depth.same(before.depth))
        fail("a depth buffer that was not given has changed");
    if (!texture.same(texture_before))
        fail("the source has changed");
    return 0;
}
