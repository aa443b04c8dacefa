/// \file
/// bmp_map_rect: what has to hold for every mapping.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "support/rects.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

constexpr int kFormats[] = {BMP_FMT_RGB8, BMP_FMT_RGBQ, BMP_FMT_YUY2};
constexpr int kFull = 4096;

/// A whole number of 2048ths: exact in units of both directions.
float exact(Random& random, float low, float high) {
    return static_cast<float>(
               random.between(static_cast<int>(std::ceil(low * 2048)), static_cast<int>(std::floor(high * 2048)))) /
           2048;
}

class RectProperties : public WithTables {
protected:
    /// A destination with its weight map, both with or without contents.
    struct Scene {
        Scene(int width, int height, int format, Random& random, bool dirty = true)
            : dest(make_noise(width, height, format, random.next())),
              map(make_weights(width, height, 0)),
              map_argument(format == BMP_FMT_RGB8 ? nullptr : map.get()) {
            if (dirty)
                fill_weights(random, lines_of(map.get()));
        }
        std::vector<std::vector<uint8_t>> bytes() const { return {snapshot(dest), snapshot(map)}; }
        void copy(const Scene& other) const {
            std::ranges::copy(lines_of(other.dest.get()), lines_of(dest.get()).begin());
            std::ranges::copy(lines_of(other.map.get()), lines_of(map.get()).begin());
        }
        void map_from(const OwnedBitmap& src, const Area& to, const Area& from, uint32_t flags = 0) const {
            map_rect({.dest = dest.get(),
                      .weight_map = map_argument,
                      .to = to,
                      .src = src.get(),
                      .from = from,
                      .flags = flags});
        }
        OwnedBitmap dest, map;
        Bitmap* map_argument;
    };

    /// Two rectangles inside their bitmaps.
    struct Geometry {
        int width, height, source_width, source_height;
        Area to, from;
    };
    static Geometry any_geometry(Random& random) {
        Geometry g;
        g.width = random.chance(85) ? random.between(2, 60) : random.between(61, 600);
        g.height = random.between(2, 9);
        g.source_width = random.between(1, 2 * g.width);
        g.source_height = random.between(1, 2 * g.height);
        const auto ends = [&](int size, float& start, float& end) {
            end = exact(random, 0, static_cast<float>(size));
            start = random.chance(30) ? 0 : exact(random, 0, end);
        };
        ends(g.width, g.to.left, g.to.right);
        ends(g.height, g.to.top, g.to.bottom);
        ends(g.source_width, g.from.left, g.from.right);
        ends(g.source_height, g.from.top, g.from.bottom);
        return g;
    }

    /// `check(format, random)`, in turn for each format.
    template <class Check>
    static void for_formats(int moderate, Check check) {
        for (int round = 0; round < rounds(moderate); ++round) {
            Random random(round_seed(round));
            // Not by the round: one seed is one call.
            const int format = kFormats[random.below(3)];
            check(format, random);
            ASSERT_FALSE(HasFailure()) << "format " << format << how_to_repeat(random);
        }
    }

    /// The part of pixel `at` that lies in [start, end), in units of 2048.
    static int covered(int at, float start, float end) {
        const float from = std::max(start, static_cast<float>(at)), to = std::min(end, static_cast<float>(at + 1));
        return std::max(0, static_cast<int>((to - from) * 2048));
    }

    static OwnedBitmap upside_down(const OwnedBitmap& bitmap) {
        OwnedBitmap turned = make_bitmap(bitmap->width, bitmap->height, static_cast<int>(bitmap->format));
        for (int y = 0; y < bitmap->height; ++y)
            std::memcpy(line(turned, bitmap->height - 1 - y), line(bitmap, y), static_cast<size_t>(bitmap->pitch));
        return turned;
    }
    static OwnedBitmap left_to_right(const OwnedBitmap& bitmap) {
        OwnedBitmap turned = make_bitmap(bitmap->width, bitmap->height, static_cast<int>(bitmap->format));
        const int size = bitmap->bytes_per_pixel;
        for (int y = 0; y < bitmap->height; ++y)
            for (int x = 0; x < bitmap->width; ++x)
                std::memcpy(line(turned, y) + (bitmap->width - 1 - x) * size, line(bitmap, y) + x * size,
                            static_cast<size_t>(size));
        return turned;
    }

    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- weights

// The weight is what is covered, whatever the source.
TEST_P(RectProperties, AClearedMapGetsTheArea) {
    for_formats(300, [](int format, Random& random) {
        if (format == BMP_FMT_RGB8)
            return;
        const Geometry g = any_geometry(random);
        const OwnedBitmap src = make_noise(g.source_width, g.source_height, format, random.next());
        const Scene scene(g.width, g.height, format, random, false);
        scene.map_from(src, g.to, g.from);
        for (int y = 0; y < g.height; ++y)
            for (int x = 0; x < g.width; ++x)
                ASSERT_EQ(weights(scene.map, y)[x],
                          covered(x, g.to.left, g.to.right) * covered(y, g.to.top, g.to.bottom) / (2048 * 2048 / kFull))
                    << "pixel " << x << ", line " << y;
    });
}

// Each pixel that two rectangles share ends up full; its colour is within truncation of the undivided mapping's.
TEST_P(RectProperties, TwoPartsMakeAWhole) {
    for_formats(300, [](int format, Random& random) {
        if (format == BMP_FMT_RGB8)
            return;
        const bool across = random.chance(50);
        const int width = random.between(2, 60), height = random.between(2, 9);
        const OwnedBitmap src = make_noise(width, height, format, random.next());
        const Scene whole_scene(width, height, format, random, false), scene(width, height, format, random, false);
        const Area all = whole(src);
        whole_scene.map_from(src, all, all);
        Area first = all, second = all;
        if (across)
            first.right = second.left = exact(random, 0, static_cast<float>(width));
        else
            first.bottom = second.top = exact(random, 0, static_cast<float>(height));
        if (random.chance(50))
            std::swap(first, second);
        scene.map_from(src, first, first);
        scene.map_from(src, second, second);
        ASSERT_EQ(snapshot(scene.map), snapshot(whole_scene.map));
        if (format == BMP_FMT_YUY2)
            return;  // a pair's chroma takes part in more than one mixture
        for (int y = 0; y < height; ++y)
            for (int i = 0; i < 4 * width; ++i) {
                if (i % 4 == 3)
                    continue;
                ASSERT_NEAR(line(scene.dest, y)[i], line(whole_scene.dest, y)[i], 1) << "line " << y << ", byte " << i;
            }
    });
}

// ---------------------------------------------------------------- what is written

TEST_P(RectProperties, NothingIsWrittenOutside) {
    for_formats(300, [](int format, Random& random) {
        const Geometry g = any_geometry(random);
        const OwnedBitmap src = make_noise(g.source_width, g.source_height, format, random.next());
        const std::vector<uint8_t> source_before = snapshot(src);
        const Scene scene(g.width, g.height, format, random), before(g.width, g.height, format, random);
        before.copy(scene);
        scene.map_from(src, g.to, g.from, random.below(4));
        ASSERT_EQ(snapshot(src), source_before);
        const int size = scene.dest->bytes_per_pixel, pair = format == BMP_FMT_YUY2 ? 2 : 1;
        for (int y = 0; y < g.height; ++y) {
            for (int x = 0; x < scene.dest->pitch / size; ++x) {
                const bool line_inside = covered(y, g.to.top, g.to.bottom) > 0;
                const auto inside = [&](int at) { return line_inside && covered(at, g.to.left, g.to.right) > 0; };
                if (!inside(x)) {
                    ASSERT_EQ(line(scene.dest, y)[x * size], line(before.dest, y)[x * size]) << x << ", " << y;
                    if (2 * x + 1 < scene.map->pitch) {
                        ASSERT_EQ(weights(scene.map, y)[x], weights(before.map, y)[x]) << x << ", " << y;
                    }
                }
                if (format == BMP_FMT_RGBQ || !(inside(x / pair * pair) || inside(x / pair * pair + pair - 1))) {
                    ASSERT_EQ(line(scene.dest, y)[x * size + size - 1], line(before.dest, y)[x * size + size - 1])
                        << x << ", " << y;
                }
            }
        }
    });
}

TEST_P(RectProperties, TwoFieldsMakeTheFrame) {
    for_formats(300, [](int format, Random& random) {
        const Geometry g = any_geometry(random);
        const OwnedBitmap src = make_noise(g.source_width, g.source_height, format, random.next());
        const Scene frame(g.width, g.height, format, random), fields(g.width, g.height, format, random);
        fields.copy(frame);
        frame.map_from(src, g.to, g.from);
        fields.map_from(src, g.to, g.from, BMP_FIELD);
        fields.map_from(src, g.to, g.from, BMP_FIELD | BMP_FIELD_ODD);
        ASSERT_EQ(fields.bytes(), frame.bytes());
    });
}

// A field source is a frame of every second line, a quarter of its line away.
TEST_P(RectProperties, AFieldIsAPictureOfItsLines) {
    for_formats(300, [](int format, Random& random) {
        const Geometry g = any_geometry(random);
        const OwnedBitmap src = make_noise(g.source_width, 2 * g.source_height, format, random.next()),
                          field = make_bitmap(g.source_width, g.source_height, format);
        src->create_flags = 2;
        const int odd = random.between(0, 1);
        for (int y = 0; y < g.source_height; ++y)
            std::memcpy(line(field, y), line(src, 2 * y + odd), static_cast<size_t>(src->pitch));
        const uint32_t flags = BMP_FIELD | static_cast<uint32_t>(odd);
        const float shift = odd ? -0.25f : 0.25f;
        const Area from = {g.from.left, 2 * g.from.top, g.from.right, 2 * g.from.bottom},
                   from_field = {g.from.left, g.from.top + shift, g.from.right, g.from.bottom + shift};
        const Scene by_flag(g.width, g.height, format, random), by_lines(g.width, g.height, format, random);
        by_lines.copy(by_flag);
        by_flag.map_from(src, g.to, from, flags);
        by_lines.map_from(field, g.to, from_field, flags);
        ASSERT_EQ(by_flag.bytes(), by_lines.bytes());
    });
}

// ---------------------------------------------------------------- values

// One colour, whatever the geometry: mixed with itself it stays; RGB8 fades it by what is covered.
TEST_P(RectProperties, OneColourStays) {
    for_formats(300, [](int format, Random& random) {
        const Geometry g = any_geometry(random);
        const int byte = random.between(0, 255);
        const OwnedBitmap src = make_filled(g.source_width, g.source_height, format, byte);
        const Scene scene(g.width, g.height, format, random, random.chance(50));
        std::ranges::fill(lines_of(scene.dest.get()), static_cast<uint8_t>(byte));
        scene.map_from(src, g.to, g.from);
        for (int y = 0; y < g.height; ++y)
            for (int i = 0; i < g.width * scene.dest->bytes_per_pixel; ++i) {
                const int area = covered(i, g.to.left, g.to.right) * covered(y, g.to.top, g.to.bottom);
                const int want = format == BMP_FMT_RGB8 && area > 0 ? byte * area / (2048 * 2048) : byte;
                ASSERT_EQ(line(scene.dest, y)[i], want) << "line " << y << ", byte " << i;
            }
    });
}

TEST_P(RectProperties, SameScaleCopies) {
    for_formats(300, [](int format, Random& random) {
        const int width = random.between(1, 200), height = random.between(1, 9);
        const OwnedBitmap src = make_noise(width + 20, height + 4, format, random.next());
        const Scene scene(width + 20, height + 4, format, random, false);
        const int step = format == BMP_FMT_YUY2 ? 2 : 1;  // a pair onto a pair
        const int sx = random.between(0, 9) * step, sy = random.between(0, 4), dx = random.between(0, 9) * step,
                  dy = random.between(0, 4);
        const auto area = [&](int x, int y) {
            return Area{static_cast<float>(x), static_cast<float>(y), static_cast<float>(x + width),
                        static_cast<float>(y + height)};
        };
        scene.map_from(src, area(dx, dy), area(sx, sy));
        const int size = src->bytes_per_pixel;
        for (int y = 0; y < height; ++y)
            for (int i = 0; i < width * size; ++i)
                if (format != BMP_FMT_RGBQ || i % 4 != 3) {
                    ASSERT_EQ(line(scene.dest, dy + y)[dx * size + i], line(src, sy + y)[sx * size + i])
                        << "line " << y << ", byte " << i;
                }
    });
}

// Where source pixels are a whole number of units, what goes in comes out, but for what each pixel loses by truncation:
// less than 1. RGB8 keeps this at covered parts, too.
TEST_P(RectProperties, NothingIsLostButByTruncation) {
    for (int round = 0; round < rounds(300); ++round) {
        Random random(round_seed(round));
        const int ratio_x = random.pick({1, 2, 4, 8, 16, 32}), ratio_y = random.pick({1, 2, 4, 8, 16});
        const bool enlarge_x = random.chance(30), enlarge_y = random.chance(30);
        const int across = random.between(1, 30), down = random.between(1, 6);
        const int source_width = enlarge_x ? across : across * ratio_x,
                  to_width = enlarge_x ? across * ratio_x : across;
        const int source_height = enlarge_y ? down : down * ratio_y, to_height = enlarge_y ? down * ratio_y : down;
        const OwnedBitmap src = make_noise(source_width, source_height, BMP_FMT_RGB8, random.next()),
                          dest = make_bitmap(to_width + 2, to_height + 2, BMP_FMT_RGB8);
        const float x = exact(random, 0, 2), y = exact(random, 0, 2);
        map_rect({.dest = dest.get(),
                  .to = {x, y, x + static_cast<float>(to_width), y + static_cast<float>(to_height)},
                  .src = src.get(),
                  .from = whole(src)});
        const auto sum = [](const OwnedBitmap& bitmap) {
            double total = 0;
            for (int k = 0; k < bitmap->height; ++k)
                for (const int byte : bytes_of_line(bitmap, k))
                    total += byte;
            return total;
        };
        const double in = sum(src) * to_width * to_height / (source_width * source_height), out = sum(dest);
        ASSERT_LE(out, in) << how_to_repeat(random);
        ASSERT_LT(in - out, (to_width + 2) * (to_height + 2)) << how_to_repeat(random);
    }
}

// Channels don't mix: each is what RGB8 makes of it. Luma rounds to nearest in whole pairs, so it may be 1 more.
TEST_P(RectProperties, EachChannelIsAPictureOfItsOwn) {
    for_formats(300, [](int format, Random& random) {
        if (format == BMP_FMT_RGB8)
            return;
        Geometry g = any_geometry(random);
        g.to = {std::floor(g.to.left), std::floor(g.to.top), std::ceil(g.to.right), std::ceil(g.to.bottom)};
        const OwnedBitmap src = make_noise(g.source_width, g.source_height, format, random.next());
        const Scene scene(g.width, g.height, format, random, false);
        scene.map_from(src, g.to, g.from);
        const int size = src->bytes_per_pixel, channels = format == BMP_FMT_RGBQ ? 3 : 1;
        for (int k = 0; k < channels; ++k) {
            const OwnedBitmap channel = make_bitmap(g.source_width, g.source_height, BMP_FMT_RGB8);
            for (int y = 0; y < g.source_height; ++y)
                for (int x = 0; x < g.source_width; ++x)
                    line(channel, y)[x] = line(src, y)[x * size + k];
            const Scene alone(g.width, g.height, BMP_FMT_RGB8, random);
            alone.map_from(channel, g.to, g.from);
            for (int y = static_cast<int>(g.to.top); y < static_cast<int>(g.to.bottom); ++y)
                for (int x = static_cast<int>(g.to.left); x < static_cast<int>(g.to.right); ++x) {
                    const int more = line(scene.dest, y)[x * size + k] - line(alone.dest, y)[x];
                    ASSERT_TRUE(more == 0 || (more == 1 && format == BMP_FMT_YUY2)) << x << ", " << y << ": " << more;
                }
        }
    });
}

// ---------------------------------------------------------------- symmetry

// Where source pixels are a whole number of units. A YUY2 line begins and ends in different ways.
TEST_P(RectProperties, MirroredSourceGivesTheMirroredPicture) {
    for_formats(300, [](int format, Random& random) {
        const bool across = format != BMP_FMT_YUY2 && random.chance(50);
        const auto mirrored = across ? left_to_right : upside_down;
        const int ratio_x = random.pick({1, 2, 4, 8}), ratio_y = random.pick({1, 2, 4, 8});
        const int to_width = random.between(1, 70), to_height = random.between(1, 6);
        const float x = random.chance(50) ? 0 : exact(random, 0, 3), y = random.chance(50) ? 0 : exact(random, 0, 3);
        const float edge = static_cast<float>(random.between(4, 6)), w = static_cast<float>(to_width),
                    h = static_cast<float>(to_height);
        const int width = to_width + static_cast<int>(edge), height = to_height + static_cast<int>(edge);
        const OwnedBitmap src = make_noise(to_width * ratio_x, to_height * ratio_y, format, random.next()),
                          turned_src = mirrored(src);
        const Scene scene(width, height, format, random, false), turned(width, height, format, random, false);
        turned.copy(scene);
        const OwnedBitmap turned_dest = mirrored(scene.dest);
        std::ranges::copy(lines_of(turned_dest.get()), lines_of(turned.dest.get()).begin());
        const Area to = {x, y, x + w, y + h};
        const Area turned_to = across ? Area{edge - x, y, edge - x + w, y + h} : Area{x, edge - y, x + w, edge - y + h};
        scene.map_from(src, to, whole(src));
        turned.map_from(turned_src, turned_to, whole(src));
        const OwnedBitmap dest_back = mirrored(turned.dest), map_back = mirrored(turned.map);
        for (int k = 0; k < height; ++k) {
            ASSERT_EQ(bytes_of_line(dest_back, k), bytes_of_line(scene.dest, k)) << "line " << k;
            ASSERT_EQ(weights_of_line(map_back, k), weights_of_line(scene.map, k)) << "line " << k;
        }
    });
}

// Moved by whole pixels (YUY2: by pairs), a picture is the same at its new place.
TEST_P(RectProperties, MovedDestinationMovesThePicture) {
    for_formats(300, [](int format, Random& random) {
        const Geometry g = any_geometry(random);
        const OwnedBitmap src = make_noise(g.source_width, g.source_height, format, random.next());
        const int dx = 2 * random.between(0, 20), dy = random.between(0, 5);
        const Scene scene(g.width, g.height, format, random), moved(g.width + dx, g.height + dy, format, random);
        const int size = scene.dest->bytes_per_pixel;
        const auto pixels = [&](const Scene& at, int x, int y) {
            // Of a last odd YUY2 pixel, the partner counts.
            return std::pair{std::span(line(at.dest, y) + x * size, static_cast<size_t>((g.width + 1) / 2 * 2 * size)),
                             std::span(weights(at.map, y) + x, static_cast<size_t>((g.width + 1) / 2 * 2))};
        };
        const bool partner_has_room = format == BMP_FMT_YUY2 || g.width % 2 == 0;
        if (!partner_has_room)
            return;
        for (int y = 0; y < g.height; ++y) {
            std::ranges::copy(pixels(scene, 0, y).first, pixels(moved, dx, y + dy).first.begin());
            std::ranges::copy(pixels(scene, 0, y).second, pixels(moved, dx, y + dy).second.begin());
        }
        scene.map_from(src, g.to, g.from);
        const float x = static_cast<float>(dx), y = static_cast<float>(dy);
        moved.map_from(src, {g.to.left + x, g.to.top + y, g.to.right + x, g.to.bottom + y}, g.from);
        for (int k = 0; k < g.height; ++k) {
            ASSERT_TRUE(std::ranges::equal(pixels(scene, 0, k).first, pixels(moved, dx, k + dy).first)) << "line " << k;
            ASSERT_TRUE(std::ranges::equal(pixels(scene, 0, k).second, pixels(moved, dx, k + dy).second))
                << "line " << k;
        }
    });
}

ZEPBMP_FOR_ALL_TABLES(RectProperties);

}  // namespace
}  // namespace zepbmp::test
