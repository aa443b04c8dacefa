/// \file
/// Any bytes become a call of bmp_map_polygon that keeps its caller's duties. It is made twice, with the plain tables
/// and with others; the pictures have to agree to the last byte. Each bitmap is a heap block that ends with its last
/// pixel, so that the address sanitizer sees the first byte too many.
///
/// make_seed_corpus.py writes the same layout.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "core/kernel_tables.h"
#include "tests/support/formats.h"
#include "zepbmp.h"

namespace {

using namespace zepbmp;
using test::bytes_per_pixel;

/// The input from front to back; zeros behind its end.
class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), left_(size) {}

    bool empty() const { return left_ == 0; }
    uint32_t take(int bytes) {
        uint32_t value = 0;
        for (int i = 0; i < bytes && left_ > 0; ++i, ++data_, --left_)
            value |= static_cast<uint32_t>(*data_) << 8 * i;
        return value;
    }
    /// Signed, in 64ths.
    float fixed() { return static_cast<float>(static_cast<int16_t>(take(2))) / 64; }
    float bits() {
        const uint32_t word = take(4);
        float value;
        std::memcpy(&value, &word, sizeof value);
        return value;
    }

private:
    const uint8_t* data_;
    size_t left_;
};

struct Free {
    void operator()(void* block) const { std::free(block); }
};

/// A bitmap whose block ends with its last pixel. Pixels of two bytes come in pairs: a pair's last byte belongs to
/// both.
class Picture {
public:
    Picture(int width, int height, int format, uint32_t create_flags = 0) {
        const int size = bytes_per_pixel(format), pixels = size == 2 ? (width + 1) & ~1 : width;
        line_bytes_ = static_cast<size_t>(pixels * size);
        record_.width = width;
        record_.height = height;
        record_.bytes_per_pixel = size;
        record_.bit_count = 8 * size;
        record_.pitch = (width * size + 15) & ~15;
        record_.create_flags = create_flags;
        record_.format = static_cast<uint32_t>(format);
        bytes_ = width > 0 && height > 0 ? static_cast<size_t>(height - 1) * pitch() + line_bytes_ : 0;
        block_.reset(static_cast<uint8_t*>(std::malloc(bytes_)));
        if (!block_ && bytes_ > 0)
            std::abort();
        record_.pixels = block_.get();
    }

    Bitmap* bitmap() { return &record_; }
    uint8_t* bytes() const { return block_.get(); }
    size_t size() const { return bytes_; }
    size_t pitch() const { return static_cast<size_t>(record_.pitch); }

    void fill_noise(uint32_t seed) {
        uint64_t state = seed * 0x9e3779b97f4a7c15u + 1;
        for (size_t i = 0; i < bytes_; i += 8) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            std::memcpy(bytes() + i, &state, std::min<size_t>(8, bytes_ - i));
        }
    }
    void fill_floats(float value) {
        for (size_t i = 0; i + sizeof value <= bytes_; i += sizeof value)
            std::memcpy(bytes() + i, &value, sizeof value);
    }

    void copy(const Picture& other) {
        if (bytes_ > 0)
            std::memcpy(bytes(), other.bytes(), bytes_);
    }

    bool padding_is(const Picture& other) const {
        for (size_t at = line_bytes_; at < bytes_; at += pitch())
            if (std::memcmp(bytes() + at, other.bytes() + at, pitch() - line_bytes_) != 0)
                return false;
        return true;
    }

private:
    Bitmap record_{};
    std::unique_ptr<uint8_t, Free> block_;
    size_t line_bytes_ = 0;
    size_t bytes_ = 0;
};

/// What a call can write.
struct Target {
    Target(int width, int height, int format, int plane_format)
        : dest(width, height, format), plane(width, height, plane_format), depth(width, height, BMP_FMT_QUAD3) {}

    void fill(uint32_t seed, uint32_t depth_kind) {
        dest.fill_noise(seed);
        plane.fill_noise(seed + 1);
        switch (depth_kind) {
            case 0: depth.fill_floats(0); break;
            case 1: depth.fill_floats(1); break;
            case 2: depth.fill_floats(-INFINITY); break;
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

bool same(const Picture& a, const Picture& b) {
    return a.size() == 0 || std::memcmp(a.bytes(), b.bytes(), a.size()) == 0;
}

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "error: %s\n", what);
    std::abort();
}

constexpr uint32_t kFlags =
    BMP_FIELD_ODD | BMP_FIELD | BMP_MAP_EXTRA | BMP_MAP_SOLID | BMP_MAP_ANTIALIAS | BMP_MAP_NO_FILTER;
constexpr struct { int level, register_bytes; } kTables[] = {{4, 64}, {4, 32}, {4, 16}, {2, 8}};

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

/// A few freed blocks are enough to catch a use after free; more would only cost fresh pages.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=4"; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const uint32_t formats = input.take(1), roles = input.take(1), flags = input.take(2) & kFlags;
    const int width = static_cast<int>(input.take(1) % 48), height = static_cast<int>(input.take(1) % 12);
    const int source_width = source_size(input.take(1));
    const int source_height = source_width > 100 ? static_cast<int>(input.take(1) % 4) : source_size(input.take(1));
    const uint32_t color = input.take(4), seed = input.take(1);
    const int level = static_cast<int16_t>(input.take(2));
    const auto tables = kTables[input.take(1) % std::size(kTables)];

    const int texture_format = formats & 7, dest_format = formats >> 3 & 7;
    constexpr int kPlaneFormats[] = {BMP_FMT_A8, BMP_FMT_PWRW, BMP_FMT_RGBQ, BMP_FMT_YUY2};
    const int plane_format = kPlaneFormats[formats >> 6];
    const bool with_plane = roles & 1, only_second = roles & 2, with_depth = roles & 4, second_texture = roles & 8;

    Picture texture(source_width, source_height, texture_format, roles >> 4 & 3);
    texture.fill_noise(seed);
    const auto texture_before = std::make_unique<uint8_t[]>(texture.size());
    if (texture.size() > 0)
        std::memcpy(texture_before.get(), texture.bytes(), texture.size());

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
    fill_kernel_tables(0, 8);
    draw(plain);
    fill_kernel_tables(tables.level, tables.register_bytes);
    draw(other);

    if (!same(plain.dest, other.dest))
        fail("the destination depends on the tables");
    if (!same(plain.plane, other.plane))
        fail("the second plane depends on the tables");
    if (!same(plain.depth, other.depth))
        fail("the depth buffer depends on the tables");
    if (!plain.dest.padding_is(before.dest) || !plain.plane.padding_is(before.plane) ||
        !plain.depth.padding_is(before.depth))
        fail("bytes behind the end of a line have changed");
    if (!with_depth && !same(plain.depth, before.depth))
        fail("a depth buffer that was not given has changed");
    if (texture.size() > 0 && std::memcmp(texture_before.get(), texture.bytes(), texture.size()) != 0)
        fail("the source has changed");
    return 0;
}
