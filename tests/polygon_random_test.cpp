/// \file
/// bmp_map_polygon over random calls, against the model: every byte of every bitmap, padding and surroundings included.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

#include "model/model.h"
#include "support/cpu_state.h"
#include "support/frame.h"
#include "support/library.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Polygon = std::vector<BmpVertex>;

constexpr uint32_t kSolid = BMP_MAP_EXTRA | BMP_MAP_SOLID;
constexpr int kNone = -1;  ///< in the place of a format: no such bitmap

/// One call. The bitmaps' bytes come from the same generator, after the call is made up.
struct Call {
    int dst_format = BMP_FMT_RGBQ, width = 0, height = 0;
    int plane_format = kNone;
    bool plane_is_dst = false;  ///< dst is null, dst2 takes its place
    bool depth = false;
    int source_format = BMP_FMT_RGBQ, source_width = 0, source_height = 0;
    uint32_t source_flags = 0;  ///< as given to bmp_create
    bool texture_second = false;
    uint32_t flags = 0;
    int32_t colour = 0, level = 0;
    Polygon polygon;

    bool solid() const { return (flags & kSolid) == kSolid; }
    bool extra() const { return (flags & BMP_MAP_EXTRA) != 0; }

    std::string text() const {
        char line[300];
        std::snprintf(line, sizeof line,
                      "bmp_map_polygon: %s format %d, %d x %d; plane %d, depth %d; source format %d, %d x %d, created "
                      "with %u, as %s; flags 0x%x, colour 0x%x, level %d; u v w x y:",
                      plane_is_dst ? "dst2" : "dst", dst_format, width, height, plane_format, depth, source_format,
                      source_width, source_height, source_flags, texture_second ? "tex_b" : "tex_a", flags,
                      static_cast<unsigned>(colour), level);
        std::string all = line;
        for (const BmpVertex& at : polygon) {
            std::snprintf(line, sizeof line, "\n    {%.9g, %.9g, %.9g, %.9g, %.9g}", double{at.u}, double{at.v},
                          double{at.w}, double{at.x}, double{at.y});
            all += line;
        }
        return all;
    }
};

/// Depths of the size of common w, and those at which a comparison turns.
void fill_depths(Random& random, std::span<uint8_t> bytes) {
    using Limits = std::numeric_limits<float>;
    const int kind = random.between(0, 3);
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
        const float depth = kind == 0           ? 0
                            : kind == 1         ? static_cast<float>(random.below(1 << 12)) / (1 << 10)
                            : random.chance(70) ? static_cast<float>(random.below(16)) / 4
                                                : random.pick({-1.0f, 1e30f, -Limits::infinity(), Limits::infinity(),
                                                               Limits::quiet_NaN(), Limits::denorm_min()});
        std::memcpy(&bytes[i], &depth, sizeof depth);
    }
}

auto fill_of(int format) {
    return format == BMP_FMT_PWRW ? fill_weights : format == BMP_FMT_A8 ? fill_masks : fill_pixels;
}

class PolygonCalls : public WithTables {
protected:
    enum Role { kDst, kPlane, kDepth, kSource, kRoles };

    /// `make(random, round)` makes up a call; both carry it out, all bitmaps are compared; `seen(call, drew)`.
    template <class Make, class Seen>
    void repeat(int moderate, Make make, Seen seen) {
        const UseTables use(GetParam());
        for (int round = 0; round < rounds(moderate); ++round) {
            Random random(round_seed(round));
            const ForceStreaming streaming(random.chance(50));
            const Call call = make(random, round);
            lay_out(random, call);
            const std::vector<uint8_t> before = contents();
            carry_out(call);
            for (int role = 0; role < kRoles; ++role)
                ASSERT_EQ(got_[role].difference(want_[role]), "")
                    << "bitmap " << role << " of " << call.text() << how_to_repeat(random);
            ASSERT_FALSE(HasFailure()) << call.text() << how_to_repeat(random);
            seen(call, contents() != before);
        }
    }
    template <class Make>
    void repeat(int moderate, Make make) {
        int drew = 0;
        repeat(moderate, make, [&](const Call&, bool drawn) { drew += drawn; });
        if (rounds(moderate) >= 100 && !HasFailure()) {
            EXPECT_GT(drew, rounds(moderate) / 8);
        }
    }

private:
    static FrameLayout frame(Random& random, int width, int height, int format) {
        // Of 2-byte pixels a whole last pair: one that is shared with the padding is read and written whole.
        const int size = bytes_per_pixel(format);
        return any_layout(random, width, height, format, size == 2 ? round_up(2 * width, 4) : size * width);
    }

    void lay_out(Random& random, const Call& call) {
        const auto make = [&](Role role, int width, int height, int format, auto fill) {
            got_[role].lay_out(frame(random, width, height, format));
            got_[role].fill(random, fill);
            want_[role].copy(got_[role]);
        };
        make(kDst, call.width, call.height, call.dst_format, fill_of(call.dst_format));
        if (call.plane_format == kNone)
            make(kPlane, 0, 0, BMP_FMT_A8, fill_noise);
        else
            make(kPlane, call.width, call.height, call.plane_format, fill_of(call.plane_format));
        make(kDepth, call.depth ? call.width : 0, call.depth ? call.height : 0, BMP_FMT_QUAD3, fill_depths);
        make(kSource, call.source_width, call.source_height, call.source_format, fill_of(call.source_format));
        got_[kSource].bitmap()->create_flags = want_[kSource].bitmap()->create_flags = call.source_flags;
    }

    void carry_out(const Call& call) {
        const auto with = [&](Frame* frames, auto function) {
            Bitmap* const dst = frames[kDst].bitmap();
            Bitmap* const plane = call.plane_format == kNone ? nullptr : frames[kPlane].bitmap();
            const void* const texture = frames[kSource].bitmap();
            const void* const colour = BMP_INTEGER(call.colour);
            const bool second = call.extra() || call.texture_second;
            function(call.plane_is_dst ? nullptr : dst, call.plane_is_dst ? dst : plane,
                     call.depth ? frames[kDepth].bitmap() : nullptr,
                     call.extra() ? (call.texture_second ? nullptr : colour) : (second ? nullptr : texture),
                     call.solid() ? BMP_INTEGER(call.level) : (second ? texture : nullptr), call.polygon.data(),
                     static_cast<int32_t>(call.polygon.size()), call.flags);
        };
        with(got_, [](auto... arguments) { call_checked(library().map_polygon, arguments...); });
        const ModelPrecision precision;
        with(want_, [](auto... arguments) { model::bmp_map_polygon(arguments...); });
    }

    std::vector<uint8_t> contents() const {
        std::vector<uint8_t> all;
        for (const Role role : {kDst, kPlane, kDepth})
            all.insert(all.end(), want_[role].bytes().begin(), want_[role].bytes().end());
        return all;
    }

    static constexpr size_t kSourceBytes = size_t{1} << 21;
    Frame got_[kRoles] = {Frame(), Frame(), Frame(), Frame(kSourceBytes)};
    Frame want_[kRoles] = {Frame(), Frame(), Frame(), Frame(kSourceBytes)};
};

// ---------------------------------------------------------------- what a call is made of

uint32_t field_flags(Random& random) {
    return random.pick({0u, 0u, BMP_FIELD, BMP_FIELD | BMP_FIELD_ODD, BMP_FIELD_ODD});
}

int any_plane(Random& random) {
    return random.pick({kNone, kNone, BMP_FMT_A8, BMP_FMT_A8, BMP_FMT_PWRW, BMP_FMT_PWRW, BMP_FMT_RGBQ, BMP_FMT_RGB8});
}

int32_t any_colour(Random& random) { return static_cast<int32_t>(random.next()); }

/// A number of pixels or lines; odd ones and those about a register's width among them. Now and then more of both than
/// are drawn at a time.
void size_destination(Random& random, Call& call) {
    call.width = random.chance(90)   ? random.between(1, 45)
                 : random.chance(70) ? random.between(46, 200)
                                     : random.between(201, 700);
    call.height = random.chance(96) ? random.between(1, 14) : random.between(15, 80);
    if (random.chance(2))
        (random.chance(50) ? call.width : call.height) = 0;
    call.plane_format = any_plane(random);
    call.plane_is_dst = random.chance(5);
}

void size_source(Random& random, Call& call, int width, int height) {
    call.source_width = random.between(1, width);
    call.source_height = random.between(1, height);
    call.source_flags = static_cast<uint32_t>(random.between(0, 3));
}

/// A texture with a kernel: one of the ten groups, the first three of them affine.
enum Group {
    kAffineYuy2,
    kAffineRgbq,
    kAffinePwrw,
    kPerspectiveYuy2,
    kPerspectiveRgbq,
    kPerspectivePwrw,
    kDepthYuy2,
    kDepthRgbq,
    kTintYuy2,
    kTintRgbq,
    kGroups
};

constexpr int kSourceFormat[kGroups] = {BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_YUY2, BMP_FMT_RGBQ,
                                        BMP_FMT_PWRW, BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_A8,   BMP_FMT_A8};

void choose_group(Random& random, Call& call, Group group) {
    call.source_format = kSourceFormat[group];
    call.dst_format = group == kTintYuy2 ? BMP_FMT_YUY2 : group == kTintRgbq ? BMP_FMT_RGBQ : call.source_format;
    call.depth = group == kDepthYuy2 || group == kDepthRgbq;
    if (group == kTintYuy2 || group == kTintRgbq || (call.depth && random.chance(30))) {
        call.flags |= BMP_MAP_EXTRA;
        call.colour = any_colour(random);
        call.texture_second = random.chance(10);
    } else {
        call.texture_second = random.chance(30);
    }
    // YUY2 goes into any pixels that are large enough.
    if (call.source_format == BMP_FMT_YUY2 && random.chance(10))
        call.dst_format = random.pick({BMP_FMT_PWRW, BMP_FMT_RGBQ, BMP_FMT_QUAD3});
    if (call.source_format == BMP_FMT_RGBQ && random.chance(10))
        call.dst_format = random.pick({BMP_FMT_QUAD3, BMP_FMT_QUAD4, BMP_FMT_QUAD5});
}

Group any_group(Random& random) { return static_cast<Group>(random.between(0, kGroups - 1)); }

bool needs_equal_w(Group group) { return group <= kAffinePwrw; }

float between(Random& random, float low, float high) {
    return low + (high - low) * static_cast<float>(random.below(1 << 20)) / (1 << 20);
}

/// One weight for all corners makes a polygon affine; with a depth buffer it meets depths that are equal.
void set_w(Random& random, Polygon& polygon, bool equal) {
    equal = equal || random.chance(15);
    const float one = random.chance(70) ? static_cast<float>(random.between(1, 8)) / 4 : between(random, 0.25f, 4);
    for (BmpVertex& at : polygon)
        at.w = equal ? one : between(random, 0.3f, 3);
}

/// Corners anywhere: triangles, concave and self-crossing polygons.
Polygon any_polygon(Random& random, const Call& call, int corners) {
    Polygon polygon(static_cast<size_t>(corners));
    for (BmpVertex& at : polygon) {
        at.u = ordinary_float(random, static_cast<float>(call.source_width));
        at.v = ordinary_float(random, static_cast<float>(call.source_height));
        at.x = ordinary_float(random, static_cast<float>(call.width));
        at.y = ordinary_float(random, static_cast<float>(call.height));
    }
    return polygon;
}

/// A rectangle, turned about the destination's middle. Ratios: source pixels for a pixel, source lines for a line.
Polygon turned_quad(Random& random, const Call& call, float angle, float ratio_x, float ratio_y) {
    const float half_x = between(random, 1.5f, static_cast<float>(call.width) * 0.7f + 2),
                half_y = between(random, 1.5f, static_cast<float>(call.height) * 0.7f + 2);
    const float middle_x = static_cast<float>(call.width) / 2, middle_y = static_cast<float>(call.height) / 2;
    const float middle_u = between(random, 0, static_cast<float>(call.source_width)),
                middle_v = between(random, 0, static_cast<float>(call.source_height));
    const float frame_lines = (call.source_flags & 2) ? 2.0f : 1.0f;
    const float c = std::cos(angle), s = std::sin(angle), mirrored = random.chance(30) ? -1.0f : 1.0f;
    Polygon polygon;
    for (const auto& [x, y] : {std::pair{-1.0f, -1.0f}, {1.0f, -1.0f}, {1.0f, 1.0f}, {-1.0f, 1.0f}}) {
        const float dx = x * half_x, dy = y * half_y;
        polygon.push_back({middle_u + mirrored * dx * ratio_x, middle_v + dy * ratio_y * frame_lines, 1,
                           middle_x + c * dx - s * dy, middle_y + s * dx + c * dy});
    }
    std::rotate(polygon.begin(), polygon.begin() + random.between(0, 3), polygon.end());
    if (random.chance(50))
        std::reverse(polygon.begin(), polygon.end());
    return polygon;
}

// ---------------------------------------------------------------- textures

constexpr int kIndices = 21;

struct Interval {
    float low, high;
};
constexpr Interval kColumns[] = {{0.1f, 1.33f}, {1.35f, 2}, {2.02f, 2.67f}, {2.69f, 5.35f}, {5.37f, 16}};
constexpr Interval kRows[] = {{0.1f, 1}, {1.01f, 1.33f}, {1.35f, 2.67f}, {2.69f, 16}};

Polygon quad_with_filter(Random& random, const Call& call, const Bitmap& source, int index) {
    if (index == 0)
        return turned_quad(random, call, between(random, 0, 6.3f), between(random, 0.1f, 4), between(random, 0.1f, 4));
    for (int attempt = 0;; ++attempt) {
        const Interval columns = kColumns[(index - 1) % 5], rows = kRows[(index - 1) / 5];
        const float angle = attempt < 8 ? between(random, -0.6f, 0.6f) : 0;
        Polygon polygon = turned_quad(random, call, angle, between(random, columns.low, columns.high),
                                      between(random, rows.low, rows.high));
        if (attempt == 30 || model::filter_index(&source, polygon.data(), 4, call.flags) == index)
            return polygon;
    }
}

// All ten groups and all 21 filters in turn.
TEST_P(PolygonCalls, EveryGroupAndFilter) {
    std::array<int, kGroups * kIndices> drawn{};
    int aim = 0;
    const auto make = [&](Random& random, int round) {
        aim = round % (kGroups * kIndices);
        const Group group = static_cast<Group>(aim / kIndices);
        const int index = aim % kIndices;
        Call call;
        size_destination(random, call);
        choose_group(random, call, group);
        call.flags |= field_flags(random) | (index == 0 ? BMP_MAP_NO_FILTER : 0);
        size_source(random, call, 60, 24);
        call.source_width += 8;
        call.source_height += 9;
        Bitmap source{};
        source.width = call.source_width;
        source.height = call.source_height;
        source.format = static_cast<uint32_t>(call.source_format);
        source.create_flags = call.source_flags;
        call.polygon = quad_with_filter(random, call, source, index);
        set_w(random, call.polygon, needs_equal_w(group));
        EXPECT_EQ(model::filter_index(&source, call.polygon.data(), 4, call.flags), index);
        return call;
    };
    constexpr int kRounds = 12 * kGroups * kIndices;
    repeat(kRounds, make, [&](const Call&, bool drew) { drawn[static_cast<size_t>(aim)] += drew; });
    if (rounds(kRounds) < kRounds || HasFailure())
        return;
    for (int i = 0; i < kGroups * kIndices; ++i)
        EXPECT_GT(drawn[static_cast<size_t>(i)], 0) << "group " << i / kIndices << ", filter " << i % kIndices;
}

// Sizes whose ratios lie on the borders between two filters, and right beside them.
TEST_P(PolygonCalls, FilterBorders) {
    repeat(2000, [](Random& random, int) {
        Call call;
        size_destination(random, call);
        const Group group = any_group(random);
        choose_group(random, call, group);
        call.flags |= field_flags(random);
        call.source_width = random.between(100, 300);
        call.source_height = random.between(30, 60);
        call.source_flags = random.pick({0u, 2u});
        const auto ratio = [&](std::initializer_list<int> thousandths) {
            return static_cast<float>(random.pick(thousandths) + random.pick({-1, 0, 0, 1}));
        };
        const float frame_lines = (call.source_flags & 2) ? 2 : 1, scale = random.pick({0.125f, 0.03125f});
        const float x = 1000 * scale, y = 1000 * scale;
        const float u = ratio({1340, 2010, 2680, 5360}) * scale, v = ratio({1005, 1340, 2680}) * scale * frame_lines;
        call.polygon = {{0, 0, 1, 0, 0}, {u, 0, 1, x, 0}, {u, v, 1, x, y}, {0, v, 1, 0, y}};
        set_w(random, call.polygon, needs_equal_w(group));
        return call;
    });
}

TEST_P(PolygonCalls, AnyPolygon) {
    repeat(4000, [](Random& random, int) {
        Call call;
        size_destination(random, call);
        const Group group = any_group(random);
        choose_group(random, call, group);
        call.flags |= field_flags(random) | (random.chance(25) ? BMP_MAP_NO_FILTER : 0) |
                      (call.depth && random.chance(30) ? BMP_MAP_ANTIALIAS : 0) |
                      (!call.extra() && random.chance(20) ? BMP_MAP_SOLID : 0) |
                      (random.chance(5) ? static_cast<uint32_t>(random.next()) & ~0xc033u : 0);
        size_source(random, call, 30, 12);
        call.polygon = any_polygon(random, call, random.chance(95) ? random.between(2, 9) : random.between(10, 200));
        set_w(random, call.polygon, needs_equal_w(group));
        return call;
    });
}

// Filters of a source that is smaller than they are, magnified and reduced.
TEST_P(PolygonCalls, TinySources) {
    repeat(4000, [](Random& random, int) {
        Call call;
        size_destination(random, call);
        const Group group = any_group(random);
        choose_group(random, call, group);
        if (!call.extra() && !call.depth && random.chance(20))
            call.flags |= BMP_MAP_ANTIALIAS;
        call.flags |= field_flags(random);
        size_source(random, call, 9, 5);
        if (random.chance(3))
            (random.chance(50) ? call.source_width : call.source_height) = 0;
        const auto scale = [&] { return std::exp2(between(random, -4, 4)); };
        const float angle = random.chance(50) ? 0 : between(random, 0, 6.3f);
        const float scale_x = scale(), scale_y = random.chance(50) ? scale_x : scale();
        call.polygon = turned_quad(random, call, angle, scale_x, scale_y);
        set_w(random, call.polygon, needs_equal_w(group));
        return call;
    });
}

// A float holds positions of more than 4096 pixels in coarser steps than the filters' margins.
TEST_P(PolygonCalls, LongSources) {
    repeat(300, [](Random& random, int) {
        Call call;
        size_destination(random, call);
        const Group group = any_group(random);
        choose_group(random, call, group);
        call.flags |= field_flags(random) | (random.chance(15) ? BMP_MAP_NO_FILTER : 0);
        size_source(random, call, 4, 4);
        const int length = random.pick({4096, 4097, 4098, 4104, 5000, 16384, 16385, 32767, 32768, 33000});
        const bool tall = random.chance(50);
        (tall ? call.source_height : call.source_width) = length;
        call.polygon = turned_quad(random, call, random.chance(50) ? 0 : between(random, 0, 6.3f),
                                   between(random, 0.1f, 12), between(random, 0.1f, 12));
        // The far end is where a tap too many would be read.
        float farthest = 0;
        for (const BmpVertex& at : call.polygon)
            farthest = std::max(farthest, tall ? at.v : at.u);
        for (BmpVertex& at : call.polygon)
            (tall ? at.v : at.u) += static_cast<float>(length) - farthest + between(random, -1, 2);
        set_w(random, call.polygon, needs_equal_w(group));
        return call;
    });
}

// Every pair of formats, every set of flags: most of these have no kernel, and draw nothing.
TEST_P(PolygonCalls, AnyFormatsAndFlags) {
    constexpr int kRounds = 8000;
    int drew = 0;
    const auto make = [](Random& random, int) {
        Call call;
        size_destination(random, call);
        call.dst_format = random.between(0, 7);
        call.source_format = random.between(0, 7);
        call.depth = random.chance(25);
        call.texture_second = random.chance(30);
        call.flags = random.below(4) | (random.chance(40) ? BMP_MAP_EXTRA : 0) |
                     (random.chance(20) ? BMP_MAP_SOLID : 0) | (random.chance(40) ? BMP_MAP_ANTIALIAS : 0) |
                     (random.chance(20) ? BMP_MAP_NO_FILTER : 0);
        call.colour = any_colour(random);
        call.level = random.between(0, 4096);
        size_source(random, call, 12, 9);
        call.polygon = any_polygon(random, call, random.between(0, 5));
        set_w(random, call.polygon, random.chance(50));
        return call;
    };
    repeat(kRounds, make, [&](const Call&, bool drawn) { drew += drawn; });
    if (rounds(kRounds) >= 100 && !HasFailure()) {
        EXPECT_GT(drew, 0);
    }
}

// ---------------------------------------------------------------- anti-aliased edges

/// Corners that run nearly level, upright, through pixels' corners and centres, into each other.
Polygon edgy_polygon(Random& random, const Call& call) {
    Polygon polygon = any_polygon(random, call, random.chance(90) ? random.between(3, 7) : random.between(8, 60));
    for (size_t i = 1; i < polygon.size(); ++i) {
        const BmpVertex& before = polygon[i - 1];
        BmpVertex& at = polygon[i];
        switch (random.below(8)) {
            case 0: at.y = before.y + static_cast<float>(random.between(-300, 300)) / 4096; break;
            case 1: at.y = before.y; break;
            case 2: at.x = before.x; break;
            case 3: at.x = before.x + static_cast<float>(random.between(-9, 9)) / 4096; break;
            case 4: at.x = before.x + (at.y - before.y) * static_cast<float>(random.between(-30, 30)); break;
            default: break;
        }
    }
    return polygon;
}

TEST_P(PolygonCalls, AntialiasedTexture) {
    repeat(4000, [](Random& random, int) {
        Call call;
        size_destination(random, call);
        const Group group = static_cast<Group>(random.between(kAffineYuy2, kPerspectivePwrw));
        choose_group(random, call, group);
        call.flags |= BMP_MAP_ANTIALIAS | field_flags(random) | (random.chance(20) ? BMP_MAP_SOLID : 0);
        size_source(random, call, 30, 12);
        call.polygon = random.chance(30) ? turned_quad(random, call, between(random, 0, 6.3f), between(random, 0.1f, 8),
                                                       between(random, 0.1f, 5))
                                         : edgy_polygon(random, call);
        set_w(random, call.polygon, needs_equal_w(group));
        return call;
    });
}

TEST_P(PolygonCalls, SolidFill) {
    repeat(6000, [](Random& random, int) {
        Call call;
        size_destination(random, call);
        call.dst_format = random.chance(95) ? random.pick({BMP_FMT_YUY2, BMP_FMT_RGBQ}) : random.between(0, 7);
        call.depth = random.chance(5);
        call.flags =
            kSolid | field_flags(random) | (random.chance(20) ? static_cast<uint32_t>(random.next()) & ~3u : 0);
        call.colour = random.chance(5) ? 0 : any_colour(random);
        call.level = random.chance(40) ? 4096 : random.chance(50) ? random.between(0, 4096) : random.pick({0, 1, 4095});
        call.source_width = call.source_height = 1;
        call.polygon = edgy_polygon(random, call);
        return call;
    });
}

// ---------------------------------------------------------------- coordinates that nobody means

float hostile_weight(Random& random) {
    return random.chance(70)
               ? between(random, 0.2f, 3)
               : random.pick({0.0f, -0.0f, -1.0f, 1e-30f, -1e-30f, 1e30f, -2.5f, std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::denorm_min()});
}

/// Kinds of hostility apart, so that most calls still draw.
void spoil(Random& random, const Call& call, Polygon& polygon) {
    const int kind = random.between(0, 5);
    for (BmpVertex& at : polygon) {
        const bool spoilt = random.chance(40);
        if (kind == 0 && spoilt)
            at.x = random.pick({1e9f, -1e9f, 3e5f, -3e5f, 524288.0f, -524288.0f, 1e30f, -1e30f, 1e5f, -1e4f});
        if (kind == 1 && spoilt)
            at.y = random.pick({1e9f, 3e5f, 1e30f, 1e4f, -1e3f, -60.0f, static_cast<float>(call.height) + 0.5f});
        if (kind == 2 && spoilt)
            at.u = hostile_float(random, static_cast<float>(call.source_width));
        if (kind == 2 && spoilt)
            at.v = hostile_float(random, static_cast<float>(call.source_height));
        if (kind == 3)
            at.w = hostile_weight(random);
        if (kind == 4 && random.chance(5))
            (random.chance(50) ? at.x : at.y) = hostile_float(random, 20);
    }
    // Half a million lines to walk down.
    if (kind == 5 && random.chance(5))
        polygon[0].y = random.pick({-1e5f, -524288.0f, -1e9f, -1e30f});
}

TEST_P(PolygonCalls, HostileCoordinates) {
    repeat(3000, [](Random& random, int) {
        Call call;
        size_destination(random, call);
        const int way = random.between(0, 2);
        const Group group =
            way == 0 ? any_group(random) : static_cast<Group>(random.between(kAffineYuy2, kPerspectivePwrw));
        choose_group(random, call, group);
        call.flags |= field_flags(random) | (random.chance(20) ? BMP_MAP_NO_FILTER : 0);
        if (way == 1)
            call.flags |= BMP_MAP_ANTIALIAS;
        if (way == 2) {
            call.flags |= kSolid;
            call.level = random.pick({4096, 4096, 1234});
            call.colour = any_colour(random);
        }
        size_source(random, call, 20, 12);
        call.polygon = any_polygon(random, call, random.between(3, 8));
        set_w(random, call.polygon, needs_equal_w(group));
        spoil(random, call, call.polygon);
        return call;
    });
}

ZEPBMP_FOR_ALL_TABLES(PolygonCalls);

}  // namespace
}  // namespace zepbmp::test
