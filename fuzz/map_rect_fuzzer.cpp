/// \file
/// Any bytes become a few calls of bmp_map_rect, onto one destination. They are made twice, with the plain tables and
/// with others; the pictures have to agree to the last byte. Most calls keep the caller's duties, the others have any
/// floats at all for a rectangle's sides: even they must not leave a bitmap.
///
/// rect_seeds.py writes the same layout.
#include <cstdint>
#include <iterator>
#include <vector>

#include "fuzz/harness.h"
#include "fuzz/picture.h"

namespace {

using namespace zepbmp;
using namespace zepbmp::fuzz;

// ---------------------------------------------------------------- one axis of both rectangles

struct Sides {
    float dest_start, dest_end, source_start, source_end;
};

/// Bits of an axis's first byte, above how wild it is.
enum AxisBits : uint32_t {
    kDestToEdge = 0x10,      ///< the destination rectangle ends with the bitmap,
    kDestFromEdge = 0x20,    ///< and begins with it
    kSourceToEdge = 0x40,    ///< the source rectangle ends with the bitmap,
    kSourceAnywhere = 0x80,  ///< and begins without regard to the ratio
};

/// A side inside a bitmap, in 64ths.
float inside(Input& input, int size) {
    return static_cast<float>(input.take(3) % (64 * static_cast<uint32_t>(size) + 1)) / 64;
}

/// Source pixels to a destination pixel.
float ratio(Input& input) {
    constexpr float kRatios[] = {1,    2,     1.5f, 4.0f / 3, 3,     4,     8,  16.0f / 9, 1.370664f,
                                 0.5f, 0.75f, 0.1f, 1e-5f,    50.3f, 1.25f, -1, -2.5f};
    const uint32_t which = input.take(1) % 32;
    return which < std::size(kRatios) ? kRatios[which] : input.fixed();
}

/// Ends lie inside the bitmaps, starts anywhere: before them they are clipped, past the ends nothing is drawn. One in 16
/// has any starts, one in 16 any floats at all.
Sides sides(Input& input, int dest_size, int source_size) {
    const uint32_t bits = input.take(1), wildness = bits % 16;
    if (wildness == 1) {
        const float dest_start = input.bits(), dest_end = input.bits(), source_start = input.bits();
        return {dest_start, dest_end, source_start, input.bits()};
    }
    Sides s;
    s.dest_end = bits & kDestToEdge ? static_cast<float>(dest_size) : inside(input, dest_size);
    s.source_end = bits & kSourceToEdge ? static_cast<float>(source_size) : inside(input, source_size);
    if (wildness == 2) {
        s.dest_start = input.bits();
        s.source_start = input.bits();
        return s;
    }
    s.dest_start = bits & kDestFromEdge ? 0 : s.dest_end - input.fixed();
    s.source_start = bits & kSourceAnywhere ? input.fixed() : s.source_end - (s.dest_end - s.dest_start) * ratio(input);
    return s;
}

// ---------------------------------------------------------------- bitmaps

/// Mostly small; beyond that, more than kernels take at a time, and more than the 4096 columns up to which a float
/// holds every 4096th of a position.
int column_count(uint32_t byte) { return static_cast<int>(byte < 224 ? byte % 80 : (byte - 223) * 131); }
int line_count(uint32_t byte, int columns) {
    if (byte >= 254 && columns < 8)
        return static_cast<int>(byte * 11);  // a destination line may have more than 2048
    return static_cast<int>(byte % (columns < 80 ? 40 : 4));
}

/// What a call can write.
struct Target {
    Target(int width, int height, int format, int map_width, int map_height)
        : dest(width, height, format),
          map(map_width, map_height, BMP_FMT_PWRW, 0,
              format == BMP_FMT_YUY2 ? LastPixel::kWithPartner : LastPixel::kAlone) {}

    void fill(uint32_t seed, uint32_t map_kind) {
        dest.fill_noise(seed);
        switch (map_kind) {
            case 0: map.fill_values(uint16_t{0}); break;
            case 1: map.fill_values(uint16_t{4096}); break;
            case 2: map.fill_values(uint16_t{1000}); break;
            case 3: map.fill_values(uint16_t{65535}); break;
            default: map.fill_noise(seed + 1); break;
        }
    }
    void copy(const Target& other) {
        dest.copy(other.dest);
        map.copy(other.map);
    }
    bool same_line(const Target& other, int line) const {
        return dest.same_line(other.dest, line) && (line >= map.height() || map.same_line(other.map, line));
    }

    Picture dest, map;
};

/// Byte 3 of every RGBQ pixel.
bool same_fourth_bytes(const Picture& a, const Picture& b) {
    for (size_t i = 3; i < a.size(); i += 4)
        if (a.bytes()[i] != b.bytes()[i])
            return false;
    return true;
}

/// One call in 32 each.
enum Oddity : uint32_t {
    kAnyFormat = 27,  ///< of all eight
    kWrongMap,        ///< none for a colour format, one for RGB8: nothing is drawn
    kSourceSize,      ///< given: nothing is drawn
    kSmallerMap,
    kLargerMap,
};

struct Call {
    Sides x, y;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const uint32_t formats = input.take(1), kinds = input.take(1), flags = kinds & (BMP_FIELD | BMP_FIELD_ODD);
    const uint32_t create_flags = kinds >> 2 & 3, map_kind = kinds >> 4 & 7;
    const bool streams = kinds >> 7;
    const int width = column_count(input.take(1)), height = line_count(input.take(1), width);
    const int source_width = column_count(input.take(1)), source_height = line_count(input.take(1), source_width);
    const uint32_t seed = input.take(1);
    const Tables tables = other_tables(input);

    constexpr int kDrawn[] = {BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_RGB8};
    const uint32_t oddity = formats >> 3;
    const int format = oddity == kAnyFormat ? static_cast<int>(formats & 7) : kDrawn[(formats & 7) % std::size(kDrawn)];
    const bool is_colour = format == BMP_FMT_YUY2 || format == BMP_FMT_RGBQ;
    const bool with_map = is_colour != (oddity == kWrongMap);
    const bool draws = (is_colour || format == BMP_FMT_RGB8) && oddity != kWrongMap && oddity != kSourceSize;
    const int more = oddity == kSmallerMap ? -1 : oddity == kLargerMap ? 1 : 0;
    const int map_width = width > 0 ? width + more : 0, map_height = height > 0 ? height + more : 0;

    constexpr size_t kMostCalls = 3;
    std::vector<Call> calls;
    do {
        const Sides x = sides(input, width, source_width);
        calls.push_back({x, sides(input, height, source_height)});
    } while (!input.empty() && calls.size() < kMostCalls);

    Picture source(source_width, source_height, format, create_flags),
        source_before(source_width, source_height, format);
    source.fill_noise(seed + 2);
    source_before.copy(source);
    Target plain(width, height, format, map_width, map_height), other(width, height, format, map_width, map_height),
        before(width, height, format, map_width, map_height);
    before.fill(seed, map_kind);
    const int32_t source_size[] = {source_width, source_height};
    const auto draw = [&](Target& target) {
        target.copy(before);
        for (const Call& call : calls)
            bmp_map_rect(target.dest.bitmap(), with_map ? target.map.bitmap() : nullptr, call.x.dest_start,
                         call.y.dest_start, call.x.dest_end, call.y.dest_end, source.bitmap(),
                         oddity == kSourceSize ? source_size : nullptr, call.x.source_start, call.y.source_start,
                         call.x.source_end, call.y.source_end, flags);
    };
    kPlainTables.select();
    stream_threshold_bytes = SIZE_MAX;
    draw(plain);
    tables.select();
    stream_threshold_bytes = streams ? 0 : SIZE_MAX;
    draw(other);

    if (!plain.dest.same(other.dest))
        fail("the destination depends on the tables");
    if (!plain.map.same(other.map))
        fail("the weight map depends on the tables");
    if (!draws && !(plain.dest.same(before.dest) && plain.map.same(before.map)))
        fail("a call that draws nothing has written");
    if (!plain.dest.same_padding(before.dest) || !plain.map.same_padding(before.map))
        fail("bytes behind the end of a line have changed");
    if (format == BMP_FMT_RGBQ && !same_fourth_bytes(plain.dest, before.dest))
        fail("the fourth byte of a pixel has changed");
    if (flags & BMP_FIELD)
        for (int line = flags & BMP_FIELD_ODD ? 0 : 1; line < height; line += 2)
            if (!plain.same_line(before, line))
                fail("a line of the other field has changed");
    if (!source.same(source_before))
        fail("the source has changed");
    return 0;
}
