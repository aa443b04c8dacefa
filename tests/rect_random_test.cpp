/// \file
/// bmp_map_rect over random calls, against the model: every byte of every bitmap, padding and surroundings included.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "model/model.h"
#include "support/cpu_state.h"
#include "support/frame.h"
#include "support/library.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

/// One direction of a mapping. The caller's duty: 0 <= to1, from1 <= the bitmaps' sizes.
struct Span {
    float to0, to1, from0, from1;
};

struct Mapping {
    Span x, y;
};

/// Mappings of one source onto one destination, one after the other. The bitmaps' bytes come from the same generator,
/// after the call is made up.
struct Call {
    int format = BMP_FMT_RGBQ, width = 0, height = 0;
    bool map = true;
    enum class Weights { kCleared, kAny, kSaturated } weights = Weights::kAny;
    int source_width = 0, source_height = 0;
    uint32_t source_flags = 0;  ///< as given to bmp_create
    bool sized = false;         ///< src_size is given
    uint32_t flags = 0;
    std::vector<Mapping> mappings;

    std::string text() const {
        char line[300];
        std::snprintf(line, sizeof line,
                      "bmp_map_rect: format %d, %d x %d, weight map %d kind %d; source %d x %d created with %u; "
                      "src_size %d, flags 0x%x; dx0 dy0 dx1 dy1, sx0 sy0 sx1 sy1:",
                      format, width, height, map, static_cast<int>(weights), source_width, source_height, source_flags,
                      sized, flags);
        std::string all = line;
        for (const auto& [x, y] : mappings) {
            std::snprintf(line, sizeof line, "\n    %.9g, %.9g, %.9g, %.9g, %.9g, %.9g, %.9g, %.9g", double{x.to0},
                          double{y.to0}, double{x.to1}, double{y.to1}, double{x.from0}, double{y.from0},
                          double{x.from1}, double{y.from1});
            all += line;
        }
        return all;
    }
};

void fill_cleared(Random&, std::span<uint8_t> bytes) { std::ranges::fill(bytes, uint8_t{0}); }
void fill_saturated(Random&, std::span<uint8_t> bytes) { std::ranges::fill(bytes, uint8_t{255}); }

class RectCalls : public WithTables {
protected:
    /// `make(random, round)` makes up a call; both carry it out, all bitmaps are compared after each mapping.
    template <class Make>
    void repeat(int moderate, Make make) {
        const UseTables use(GetParam());
        int drew = 0;
        for (int round = 0; round < rounds(moderate); ++round) {
            Random random(round_seed(round));
            const ForceStreaming streaming(random.chance(50));
            const Call call = make(random, round);
            lay_out(random, call);
            const std::vector<uint8_t> before = contents();
            for (const Mapping& mapping : call.mappings) {
                carry_out(call, mapping);
                for (int role = 0; role < kRoles; ++role)
                    ASSERT_EQ(got_[role].difference(want_[role]), "")
                        << "bitmap " << role << " after mapping " << &mapping - call.mappings.data() << " of "
                        << call.text() << how_to_repeat(random);
                ASSERT_FALSE(HasFailure()) << call.text() << how_to_repeat(random);
            }
            drew += contents() != before;
        }
        if (rounds(moderate) >= 100) {
            EXPECT_GT(drew, rounds(moderate) / 4);
        }
    }

private:
    enum Role { kDest, kMap, kSource, kRoles };

    void lay_out(Random& random, const Call& call) {
        // The partner of a last odd YUY2 pixel is read and written, as a pixel and as a weight.
        const auto line_bytes = [&](int width, int size) {
            return size * (call.format == BMP_FMT_YUY2 ? round_up(width, 2) : width);
        };
        const auto make = [&](Role role, int width, int height, int format, auto fill) {
            got_[role].lay_out(any_layout(random, width, height, format, line_bytes(width, bytes_per_pixel(format))));
            got_[role].fill(random, fill);
            want_[role].copy(got_[role]);
        };
        make(kDest, call.width, call.height, call.format, fill_pixels);
        make(kMap, call.map ? call.width : 0, call.map ? call.height : 0, BMP_FMT_PWRW,
             call.weights == Call::Weights::kCleared ? fill_cleared
             : call.weights == Call::Weights::kAny   ? fill_weights
                                                     : fill_saturated);
        // White everywhere has the largest sums.
        make(kSource, call.source_width, call.source_height, call.format,
             random.chance(8) ? fill_saturated : fill_pixels);
        got_[kSource].bitmap()->create_flags = want_[kSource].bitmap()->create_flags = call.source_flags;
    }

    void carry_out(const Call& call, const Mapping& mapping) {
        const int32_t size[2] = {call.source_width, call.source_height};
        const auto with = [&](Frame* frames, auto function) {
            const auto& [x, y] = mapping;
            function(frames[kDest].bitmap(), call.map ? frames[kMap].bitmap() : nullptr, x.to0, y.to0, x.to1, y.to1,
                     frames[kSource].bitmap(), call.sized ? size : nullptr, x.from0, y.from0, x.from1, y.from1,
                     call.flags);
        };
        with(got_, [](auto... arguments) { call_checked(library().map_rect, arguments...); });
        const ModelPrecision precision;
        with(want_, [](auto... arguments) { model::bmp_map_rect(arguments...); });
    }

    std::vector<uint8_t> contents() const {
        std::vector<uint8_t> all;
        for (const Role role : {kDest, kMap})
            all.insert(all.end(), want_[role].bytes().begin(), want_[role].bytes().end());
        return all;
    }

    static constexpr size_t kBytes = size_t{1} << 20;
    Frame got_[kRoles] = {Frame(kBytes), Frame(kBytes), Frame(kBytes)};
    Frame want_[kRoles] = {Frame(kBytes), Frame(kBytes), Frame(kBytes)};
};

// ---------------------------------------------------------------- what a call is made of

constexpr int kFormats[] = {BMP_FMT_RGB8, BMP_FMT_RGBQ, BMP_FMT_YUY2};

uint32_t any_field(Random& random) {
    return random.pick({0u, 0u, 0u, BMP_FIELD, BMP_FIELD | BMP_FIELD_ODD, BMP_FIELD_ODD});
}

/// A format, a destination, flags. Kernels work in groups of pixels and in strips of several hundred.
Call any_destination(Random& random, int round) {
    Call call;
    call.format = kFormats[round % 3];
    call.map = call.format != BMP_FMT_RGB8;
    call.width = random.chance(75)   ? random.between(1, 70)
                 : random.chance(80) ? random.between(71, 200)
                                     : random.between(201, 700);
    call.height = random.chance(90) ? random.between(1, 9) : random.between(10, 30);
    call.weights =
        random.pick({Call::Weights::kCleared, Call::Weights::kCleared, Call::Weights::kAny, Call::Weights::kSaturated});
    call.source_flags = random.below(4);
    call.flags = any_field(random) | (random.chance(5) ? static_cast<uint32_t>(random.next()) & ~3u : 0);
    return call;
}

float between(Random& random, float low, float high) {
    return low + (high - low) * static_cast<float>(random.below(1 << 20)) / (1 << 20);
}

/// From `low` to `high`: whole, in parts of a pixel, or any.
float position(Random& random, float low, float high) {
    const float parts = random.pick({1.0f, 1.0f, 2.0f, 64.0f, 2048.0f, 4096.0f, 0.0f});
    const float any = between(random, low, high);
    return std::clamp(parts > 0 ? std::round(any * parts) / parts : any, low, high);
}

float position(Random& random, float low, int high) { return position(random, low, static_cast<float>(high)); }

/// Source pixels for a destination pixel.
float usual_ratio(Random& random) {
    return random.pick({1.0f,  2.0f,      2.0f,     1.5f,       1.5f, 4.0f / 3, 4.0f / 3, 3.0f,     4.0f,  8.0f,
                        1.25f, 16.0f / 9, 9.0f / 4, 16.0f / 15, 0.5f, 0.75f,    2.0f / 3, 1.0f / 3, 0.25f, 9.0f / 16});
}

float any_ratio(Random& random) { return random.chance(60) ? usual_ratio(random) : std::exp2(between(random, -6, 4)); }

/// A source that has `ratio` times the destination's pixels, or some more.
int source_size(Random& random, int size, float ratio, int limit) {
    const int wanted = static_cast<int>(std::ceil(static_cast<float>(size) * ratio));
    return std::clamp(wanted + random.pick({0, 0, 1, 2, 5}), 1, limit);
}

/// Lines of `width` pixels that a frame has room for, whatever the format and the pitch.
int lines_for(int width) { return 1'000'000 / (4 * width + 64); }

void size_source(Random& random, Call& call, float ratio_x, float ratio_y) {
    call.source_width = source_size(random, call.width, ratio_x, 3000);
    call.source_height = source_size(random, call.height, ratio_y, std::min(400, lines_for(call.source_width)));
}

/// Both rectangles inside, the source's at most all of it.
Span scaled(Random& random, int to_size, int from_size, float ratio) {
    Span span;
    span.to1 = random.chance(50) ? static_cast<float>(to_size) : position(random, 0, to_size);
    span.to0 = random.chance(40) ? 0 : position(random, 0, span.to1);
    const float end = static_cast<float>(from_size);
    const float length = std::min(end, (span.to1 - span.to0) * ratio);
    if (random.chance(50)) {
        span.from1 = random.chance(50) ? end : position(random, length, end);
        span.from0 = span.from1 - length;
    } else {
        span.from0 = random.chance(30) ? 0 : position(random, 0, end - length);
        span.from1 = std::min(end, span.from0 + length);
    }
    return span;
}

/// All of both, or of one a part.
Span fitted(Random& random, int to_size, int from_size) {
    const auto start = [&](int size) { return random.chance(70) ? 0 : position(random, 0, size); };
    const float to0 = start(to_size), from0 = start(from_size);
    return {to0, static_cast<float>(to_size), from0, static_cast<float>(from_size)};
}

/// One to one, at sub-pixel places or not.
Span shifted(Random& random, int to_size, int from_size) {
    const float length = position(random, 0, std::min(to_size, from_size));
    Span span;
    span.to0 = position(random, 0, static_cast<float>(to_size) - length);
    span.to1 = std::min(span.to0 + length, static_cast<float>(to_size));
    span.from0 = position(random, 0, static_cast<float>(from_size) - length);
    span.from1 = std::min(span.from0 + (span.to1 - span.to0), static_cast<float>(from_size));
    return span;
}

/// A start before the bitmap, inside it, behind it, or far away.
float any_start(Random& random, int size) {
    const float end = static_cast<float>(size);
    switch (random.below(8)) {
        case 0: return position(random, -2 * end - 2, 0.0f);
        case 1: return position(random, -3, 0.0f);
        case 2: return position(random, end, 2 * end + 3);
        case 3: return random.pick({-1e4f, -1234.5f, -1e6f, 1e4f, 1e6f, -0.0f, -1.0f / 4096, -1e-7f});
        default: return position(random, 0.0f, end);
    }
}

Span clipped(Random& random, int to_size, int from_size, float ratio) {
    Span span = scaled(random, to_size, from_size, ratio);
    switch (random.below(4)) {
        case 0: span.to0 = any_start(random, to_size); break;
        case 1: span.from0 = any_start(random, from_size); break;
        case 2:
            span.to0 = any_start(random, to_size);
            span.from0 = any_start(random, from_size);
            break;
        default: {  // both starts by the same part
            const float outside = position(random, 0.0f, span.to1 - span.to0 + 2) + position(random, 0.0f, 9.0f);
            span.to0 -= outside;
            span.from0 -= outside * ratio;
        }
    }
    return span;
}

/// Inside one pixel or a few; the source all of it, thin, empty or turned round.
Span thin(Random& random, int to_size, int from_size) {
    const auto few_parts = [&] {
        return static_cast<float>(random.between(0, 9)) / random.pick({4096.0f, 2048.0f, 8.0f});
    };
    Span span;
    span.to0 = position(random, 0, to_size);
    span.to1 = std::min(span.to0 + few_parts(), static_cast<float>(to_size));
    span.from0 = position(random, 0, from_size);
    span.from1 = random.chance(30)   ? std::min(span.from0 + few_parts(), static_cast<float>(from_size))
                 : random.chance(50) ? position(random, 0, from_size)
                                     : static_cast<float>(from_size);
    return span;
}

/// The walk goes over the last column or row: little of the source's end, enlarged; a source that is turned round or
/// empty, so that every destination unit is one of its columns.
Span over_the_end(Random& random, int to_size, int from_size) {
    const float end = static_cast<float>(from_size);
    const float to1 = random.chance(60) ? static_cast<float>(to_size) : position(random, 0, to_size);
    Span span = {position(random, 0.0f, to1), to1, 0, end};
    switch (random.below(4)) {
        case 0: {
            const int units = random.chance(30) ? random.between(0, 2) : random.between(1, 40'000);
            span.from0 = end - (static_cast<float>(units) + random.pick({0.0f, 1.0f, between(random, 0, 1)})) / 4096;
            break;
        }
        case 1: span.from0 = between(random, 0, end); break;
        case 2: span.from0 = span.from1 = position(random, 0.0f, end); break;
        default: span.from1 = position(random, 0.0f, end); span.from0 = position(random, span.from1, end);
    }
    span.from0 = std::max(span.from0, 0.0f);
    return span;
}

Span any_span(Random& random, int to_size, int from_size, float ratio) {
    switch (random.below(8)) {
        case 0:
        case 1: return scaled(random, to_size, from_size, ratio);
        case 2: return fitted(random, to_size, from_size);
        case 3: return shifted(random, to_size, from_size);
        case 4: return clipped(random, to_size, from_size, ratio);
        case 5: return thin(random, to_size, from_size);
        case 6: return over_the_end(random, to_size, from_size);
        default:
            return {any_start(random, to_size), position(random, 0, to_size), any_start(random, from_size),
                    position(random, 0, from_size)};
    }
}

/// One mapping, or several that meet each other's weights.
template <class Map>
void add_mappings(Random& random, Call& call, Map map) {
    const int count = random.chance(70) ? 1 : random.between(2, 4);
    for (int i = 0; i < count; ++i)
        call.mappings.push_back(i > 0 && random.chance(30) ? call.mappings.back() : map());
}

// ---------------------------------------------------------------- the tests

TEST_P(RectCalls, UsualRatios) {
    repeat(2400, [](Random& random, int round) {
        Call call = any_destination(random, round);
        const float x = usual_ratio(random), y = random.chance(50) ? x : usual_ratio(random);
        size_source(random, call, x, y);
        add_mappings(random, call, [&] {
            return Mapping{scaled(random, call.width, call.source_width, x),
                           scaled(random, call.height, call.source_height, y)};
        });
        return call;
    });
}

TEST_P(RectCalls, SameScale) {
    repeat(1800, [](Random& random, int round) {
        Call call = any_destination(random, round);
        size_source(random, call, 1, random.chance(70) ? 1 : any_ratio(random));
        add_mappings(random, call, [&] {
            return Mapping{shifted(random, call.width, call.source_width),
                           random.chance(70) ? shifted(random, call.height, call.source_height)
                                             : fitted(random, call.height, call.source_height)};
        });
        return call;
    });
}

TEST_P(RectCalls, AnyRatio) {
    repeat(1200, [](Random& random, int round) {
        Call call = any_destination(random, round);
        size_source(random, call, any_ratio(random), any_ratio(random));
        add_mappings(random, call, [&] {
            return Mapping{fitted(random, call.width, call.source_width),
                           fitted(random, call.height, call.source_height)};
        });
        return call;
    });
}

// Four to several thousand columns or lines for a pixel.
TEST_P(RectCalls, StrongReduction) {
    repeat(240, [](Random& random, int round) {
        Call call = any_destination(random, round);
        call.width = random.between(1, 9);
        call.height = random.between(1, 5);
        const float strong = std::exp2(between(random, 2, 12)), other = std::exp2(between(random, -1, 3));
        if (random.chance(50)) {
            call.source_width = source_size(random, call.width, strong, 8000);
            call.source_height = source_size(random, call.height, other, lines_for(call.source_width));
        } else {
            call.source_width = source_size(random, call.width, other, 20);
            call.source_height = source_size(random, call.height, strong, lines_for(call.source_width));
        }
        add_mappings(random, call, [&] {
            return Mapping{fitted(random, call.width, call.source_width),
                           fitted(random, call.height, call.source_height)};
        });
        return call;
    });
}

// Several strips of pixels to a line.
TEST_P(RectCalls, WideLines) {
    repeat(240, [](Random& random, int round) {
        Call call = any_destination(random, round);
        call.width = random.between(500, 3000);
        call.height = random.between(1, 4);
        const float x = any_ratio(random), y = usual_ratio(random);
        call.source_width = source_size(random, call.width, x, 8000);
        call.source_height = source_size(random, call.height, y, 9);
        add_mappings(random, call, [&] {
            return Mapping{random.chance(50) ? scaled(random, call.width, call.source_width, x)
                                             : any_span(random, call.width, call.source_width, x),
                           scaled(random, call.height, call.source_height, y)};
        });
        return call;
    });
}

TEST_P(RectCalls, Clipped) {
    repeat(2400, [](Random& random, int round) {
        Call call = any_destination(random, round);
        const float x = any_ratio(random), y = any_ratio(random);
        size_source(random, call, x, y);
        add_mappings(random, call, [&] {
            const bool both = random.chance(40), across = random.chance(50);
            return Mapping{both || across ? clipped(random, call.width, call.source_width, x)
                                          : scaled(random, call.width, call.source_width, x),
                           both || !across ? clipped(random, call.height, call.source_height, y)
                                           : scaled(random, call.height, call.source_height, y)};
        });
        return call;
    });
}

TEST_P(RectCalls, OverTheEnd) {
    repeat(1200, [](Random& random, int round) {
        Call call = any_destination(random, round);
        if (random.chance(60)) {
            call.source_flags = random.pick({2u, 3u});
            call.flags = random.pick({BMP_FIELD, BMP_FIELD | BMP_FIELD_ODD});
        }
        const float x = any_ratio(random), y = any_ratio(random);
        size_source(random, call, x, y);
        if (random.chance(20))
            call.source_height = random.between(1, 3);
        if (random.chance(20))
            call.source_width = random.between(1, 3);
        add_mappings(random, call, [&] {
            const bool both = random.chance(40), across = random.chance(50);
            return Mapping{both || across ? over_the_end(random, call.width, call.source_width)
                                          : fitted(random, call.width, call.source_width),
                           both || !across ? over_the_end(random, call.height, call.source_height)
                                           : fitted(random, call.height, call.source_height)};
        });
        return call;
    });
}

TEST_P(RectCalls, AnyGeometry) {
    repeat(2400, [](Random& random, int round) {
        Call call = any_destination(random, round);
        const float x = any_ratio(random), y = any_ratio(random);
        size_source(random, call, x, y);
        if (random.chance(2))
            (random.chance(50) ? call.source_width : call.source_height) = 0;
        add_mappings(random, call, [&] {
            return Mapping{any_span(random, call.width, call.source_width, x),
                           any_span(random, call.height, call.source_height, y)};
        });
        return call;
    });
}

// Every format, with a map and without, with a source size and without: most of these draw nothing.
TEST_P(RectCalls, AnyFormatsAndFlags) {
    repeat(900, [](Random& random, int round) {
        Call call = any_destination(random, round);
        if (random.chance(40))
            call.format = random.between(0, 7);
        if (random.chance(20))
            call.map = !call.map;
        call.sized = random.chance(20);
        size_source(random, call, 1, 1);
        call.mappings = {
            {fitted(random, call.width, call.source_width), scaled(random, call.height, call.source_height, 1)}};
        return call;
    });
}

ZEPBMP_FOR_ALL_TABLES(RectCalls);

}  // namespace
}  // namespace zepbmp::test
