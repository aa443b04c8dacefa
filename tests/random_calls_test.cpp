/// \file
/// Every export over random calls, against the model: every byte of every bitmap, padding and surroundings included.
#include <gtest/gtest.h>

#include "model/model.h"
#include "support/cpu_state.h"
#include "support/frame.h"
#include "support/library.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

int round_up(int value, int multiple) { return (value + multiple - 1) / multiple * multiple; }

/// Where the library works, and where the model does. Both begin as the same bytes at the same distance from a 16-byte
/// boundary.
struct Twins {
    Frame got, want;

    void make(Random& random, const FrameLayout& layout, void (*fill_lines)(Random&, std::span<uint8_t>)) {
        got.lay_out(layout);
        got.fill(random, fill_lines);
        want.copy(got);
    }
};

class RandomCalls : public WithTables {
protected:
    /// One round: `make` lays out the bitmaps and calls both; then all of them are compared.
    template <class Make>
    void repeat(int moderate, Make make) {
        const UseTables use(GetParam());
        for (int round = 0; round < rounds(moderate); ++round) {
            Random random(round_seed(round));
            const ForceStreaming streaming(random.chance(50));
            const std::string call = make(random);
            for (size_t i = 0; i < std::size(twins_); ++i)
                ASSERT_EQ(twins_[i].got.difference(twins_[i].want), "")
                    << "bitmap " << i << " of " << call << how_to_repeat(random);
            ASSERT_FALSE(HasFailure()) << call << how_to_repeat(random);
        }
    }

    /// Lines of which `line_bytes` bytes are there to be touched; all at 16-byte boundaries, or not all.
    static FrameLayout image(Random& random, int width, int height, int format, int line_bytes, bool aligned,
                             int step = 1) {
        FrameLayout layout = {.width = width, .height = height, .format = format, .at_end = random.chance(70)};
        const int pixel_bytes = std::max(line_bytes, width * bytes_per_pixel(format));
        layout.pitch = round_up(pixel_bytes + (random.chance(50) ? 0 : random.between(0, 40)), aligned ? 16 : step);
        layout.last_line_bytes = random.chance(20) ? layout.pitch : line_bytes;
        if (aligned)
            layout.skew = 0;
        else if (layout.pitch % 16 == 0)
            layout.skew = step * random.between(1, 16 / step - 1);
        else
            layout.skew = random.chance(50) && layout.last_line_bytes % step == 0
                              ? kFlush
                              : step * random.between(0, 16 / step - 1);
        return layout;
    }

    /// The call's result has to be 0 here and there, and it has to leave the processor as it was.
    template <class Function, class... Arguments>
    static void expect_zero(Function* function, Arguments... arguments) {
        const CallCheck check;
        const int32_t result = function(arguments...);
        const char* const complaint = check.complaint();
        EXPECT_STREQ(complaint, "");
        EXPECT_EQ(result, 0);
    }

    /// The call has to leave the processor as it was.
    template <class Function, class... Arguments>
    static void expect_clean(Function* function, Arguments... arguments) {
        const CallCheck check;
        function(arguments...);
        const char* const complaint = check.complaint();
        EXPECT_STREQ(complaint, "");
    }

    Twins twins_[5];
};

uint32_t field_flags(Random& random) {
    return random.pick({0u, 0u, BMP_FIELD, BMP_FIELD | BMP_FIELD_ODD, BMP_FIELD_ODD});
}

std::string number(const char* name, int64_t value) { return std::string(" ") + name + " " + std::to_string(value); }

void fill_mask_lines(Random& random, std::span<uint8_t> bytes) {
    (random.chance(50) ? fill_masks : fill_weights)(random, bytes);
}

TEST_P(RandomCalls, Compose) {
    repeat(20000, [&](Random& random) {
        const int format = random.pick({BMP_FMT_YUY2, BMP_FMT_YUY2, BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_RGBQ,
                                        BMP_FMT_PWRW, BMP_FMT_QUAD3, BMP_FMT_RGB8, BMP_FMT_A8});
        const int width = random.chance(90) ? random.between(0, 48) : random.between(49, 400),
                  height = random.between(0, 6);
        const int mask_format = random.pick({BMP_FMT_A8, BMP_FMT_A8, BMP_FMT_PWRW, BMP_FMT_PWRW, BMP_FMT_YUY2,
                                             BMP_FMT_RGB8, BMP_FMT_RGBQ, BMP_FMT_QUAD5});
        const int mask_bytes = mask_format == BMP_FMT_A8 ? 1 : 2;
        const bool aligned[4] = {random.chance(60), random.chance(85), random.chance(85), random.chance(85)};
        const int first = random.chance(20) ? 0 : 1, second = random.chance(20) ? 0 : 2;
        const bool images_aligned = aligned[0] && aligned[first] && aligned[second];
        const bool mixes = format == BMP_FMT_YUY2 || format == BMP_FMT_RGBQ;

        // The pixels of a line that are read and written, padding among them.
        const int count = format == BMP_FMT_RGBQ ? (mask_bytes == 1 ? round_up(width, 2) : width)
                          : images_aligned && (mask_bytes == 1 || aligned[3]) ? round_up(width, 8)
                                                                              : round_up(width, 4);
        const int line_bytes = mixes ? count * bytes_per_pixel(format) : width * bytes_per_pixel(format);
        const auto larger = [&](int size) { return random.chance(70) ? size : size + random.between(0, 3); };
        twins_[0].make(random, image(random, width, height, format, line_bytes, aligned[0]), fill_pixels);
        twins_[1].make(random, image(random, larger(width), larger(height), format, line_bytes, aligned[1]),
                       fill_pixels);
        twins_[2].make(random, image(random, larger(width), larger(height), format, line_bytes, aligned[2]),
                       fill_pixels);
        twins_[3].make(random,
                       image(random, larger(width), larger(height), mask_format, count * mask_bytes, aligned[3]),
                       fill_mask_lines);

        const uint32_t flags = field_flags(random) | (random.chance(10) ? 0xfffefffcu & random.next() : 0);
        expect_zero(library().compose, twins_[0].got.bitmap(), twins_[first].got.bitmap(), twins_[second].got.bitmap(),
                    static_cast<const void*>(twins_[3].got.bitmap()), flags);
        model::bmp_compose(twins_[0].want.bitmap(), twins_[first].want.bitmap(), twins_[second].want.bitmap(),
                           twins_[3].want.bitmap(), flags, GetParam().arithmetic());
        return "compose" + number("format", format) + number("width", width) + number("height", height) +
               number("mask format", mask_format) + number("flags", flags) + number("src1", first) +
               number("src2", second);
    });
}

TEST_P(RandomCalls, ComposeAtLevel) {
    repeat(9000, [&](Random& random) {
        const int format = random.pick({BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_QUAD3, BMP_FMT_QUAD4,
                                        BMP_FMT_QUAD5, BMP_FMT_RGB8, BMP_FMT_A8});
        const int width = random.chance(90) ? random.between(0, 48) : random.between(49, 400),
                  height = random.between(0, 6);
        const bool aligned[3] = {random.chance(60), random.chance(85), random.chance(85)};

        const int first = random.chance(20) ? 0 : 1, second = random.chance(20) ? 0 : 2;
        // Whole stored lines of the destination; where one is not aligned, up to 3 bytes more.
        FrameLayout layout = image(random, width, height, format, width * bytes_per_pixel(format), aligned[0]);
        const int count = aligned[0] && aligned[first] && aligned[second] ? layout.pitch : round_up(layout.pitch, 4);
        layout.last_line_bytes = count;
        twins_[0].make(random, layout, fill_pixels);
        for (int i = 1; i < 3; ++i)
            twins_[i].make(random, image(random, width, height + random.between(0, 1), format, count, aligned[i]),
                           fill_pixels);

        const int level = random.chance(40) ? random.between(0, 4096)
                                            : random.pick({0, 1, 2, 2047, 2048, 2049, 4095, 4096, 4097, 5000, -1, -4096,
                                                           32767, 32768, 65536 + 5, INT32_MAX, INT32_MIN});
        const uint32_t flags =
            field_flags(random) | BMP_COMPOSE_LEVEL | (random.chance(10) ? 0xfffefffcu & random.next() : 0);
        expect_zero(library().compose, twins_[0].got.bitmap(), twins_[first].got.bitmap(), twins_[second].got.bitmap(),
                    BMP_INTEGER(level), flags);
        model::bmp_compose(twins_[0].want.bitmap(), twins_[first].want.bitmap(), twins_[second].want.bitmap(),
                           BMP_INTEGER(level), flags, GetParam().arithmetic());
        return "compose" + number("format", format) + number("width", width) + number("height", height) +
               number("level", level) + number("flags", flags) + number("src1", first) + number("src2", second);
    });
}

TEST_P(RandomCalls, ComposeColor) {
    repeat(16000, [&](Random& random) {
        const int format = random.pick(
            {BMP_FMT_YUY2, BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_A8, BMP_FMT_QUAD4});
        const int width = random.chance(90) ? random.between(0, 48) : random.between(49, 400),
                  height = random.between(0, 6);
        const bool mixes = format == BMP_FMT_YUY2 || format == BMP_FMT_RGBQ;
        const int line_bytes = width * bytes_per_pixel(format);
        // A last odd pixel of YUY2 is not touched: its memory need not be there.
        const int touched = format == BMP_FMT_YUY2 ? width / 2 * 4 : line_bytes;
        const int mask_pixels = format == BMP_FMT_YUY2 ? width / 2 * 2 : width;
        for (int i = 0; i < 3; ++i)
            twins_[i].make(random,
                           image(random, width, height, format, mixes ? touched : line_bytes, random.chance(50)),
                           fill_pixels);
        for (int i = 3; i < 5; ++i) {
            const int mask_format = random.pick({BMP_FMT_PWRW, BMP_FMT_PWRW, BMP_FMT_YUY2, BMP_FMT_A8, BMP_FMT_RGBQ});
            twins_[i].make(random, image(random, width, height, mask_format, 2 * mask_pixels, random.chance(50)),
                           fill_weights);
        }
        const int first = random.chance(20) ? 0 : 1, second = random.chance(20) ? 0 : 2;
        const bool band = random.chance(60);
        const auto color = static_cast<uint32_t>(random.next());
        const uint32_t flags = field_flags(random) | (random.chance(10) ? 0xfffffffcu & random.next() : 0);
        const auto arguments = [&](auto member, auto call) {
            const auto bitmap = [&](int i) { return (twins_[i].*member).bitmap(); };
            call(bitmap(0), bitmap(first), band ? bitmap(second) : nullptr, bitmap(3), band ? bitmap(4) : nullptr);
        };
        arguments(&Twins::got, [&](Bitmap* dest, Bitmap* src1, Bitmap* src2, Bitmap* mask1, Bitmap* mask2) {
            expect_zero(library().compose_color, dest, static_cast<const Bitmap*>(src1),
                        static_cast<const Bitmap*>(src2), static_cast<const Bitmap*>(mask1),
                        static_cast<const Bitmap*>(mask2), color, flags);
        });
        arguments(&Twins::want, [&](Bitmap* dest, Bitmap* src1, Bitmap* src2, Bitmap* mask1, Bitmap* mask2) {
            model::bmp_compose_color(dest, src1, src2, mask1, mask2, color, flags, GetParam().arithmetic());
        });
        return "compose_color" + number("format", format) + number("width", width) + number("height", height) +
               number("band", band) + number("color", color) + number("flags", flags) + number("src1", first) +
               number("src2", second);
    });
}

TEST_P(RandomCalls, Clear) {
    repeat(2000, [&](Random& random) {
        const int format = random.between(0, 7), width = random.between(0, 100), height = random.between(0, 9);
        FrameLayout layout = image(random, width, height, format, width * bytes_per_pixel(format), random.chance(50));
        layout.last_line_bytes = layout.pitch;
        twins_[0].make(random, layout, fill_noise);
        const uint32_t flags = field_flags(random) | (random.chance(10) ? 0xfffffffcu & random.next() : 0);
        call_checked(library().clear, twins_[0].got.bitmap(), flags);
        model::bmp_clear(twins_[0].want.bitmap(), flags);
        return "clear" + number("flags", flags);
    });
}

TEST_P(RandomCalls, Copy) {
    repeat(2000, [&](Random& random) {
        const int format = random.between(0, 7), width = random.between(0, 100), height = random.between(0, 9);
        const uint32_t flags = field_flags(random) | (random.chance(10) ? 0xfffffffcu & random.next() : 0);
        FrameLayout layout = image(random, width, height, format, width * bytes_per_pixel(format), random.chance(50));
        layout.last_line_bytes = layout.pitch;
        twins_[0].make(random, layout, fill_noise);
        if (flags & BMP_FIELD) {  // the source may be larger
            layout.pitch += random.pick({0, 0, 1, 16});
            layout.height += random.pick({0, 0, 1, 2});
        }
        if (random.chance(50))
            layout.skew = random.between(0, 15);
        twins_[1].make(random, layout, fill_noise);
        const int source = random.chance(10) ? 0 : 1;
        call_checked(library().copy, twins_[0].got.bitmap(), static_cast<const Bitmap*>(twins_[source].got.bitmap()),
                     flags);
        model::bmp_copy(twins_[0].want.bitmap(), twins_[source].want.bitmap(), flags);
        return "copy" + number("flags", flags);
    });
}

TEST_P(RandomCalls, Interporate) {
    repeat(9000, [&](Random& random) {
        const int format = random.between(0, 7), width = random.between(0, 100), height = random.between(0, 9);
        const uint32_t flags = static_cast<uint32_t>(random.next());
        FrameLayout layout = image(random, width, height, format, width * bytes_per_pixel(format), random.chance(50));
        layout.last_line_bytes = layout.pitch;
        twins_[0].make(random, layout, fill_pixels);
        if (random.chance(50))
            layout.skew = random.between(0, 15);
        twins_[1].make(random, layout, fill_pixels);
        const int source = random.chance(40) ? 0 : 1;
        call_checked(library().interporate, twins_[0].got.bitmap(),
                     static_cast<const Bitmap*>(twins_[source].got.bitmap()), flags);
        model::bmp_interporate(twins_[0].want.bitmap(), twins_[source].want.bitmap(), flags);
        return "interporate" + number("height", height) + number("flags", flags) + number("source", source);
    });
}

TEST_P(RandomCalls, Blt) {
    repeat(20000, [&](Random& random) {
        const int format = random.between(0, 7), bytes = bytes_per_pixel(format);
        for (int i = 0; i < 2; ++i) {
            const int width = random.between(0, 60), height = random.between(0, 9);
            twins_[i].make(random, image(random, width, height, format, width * bytes, random.chance(50)), fill_noise);
        }
        const int source = random.chance(40) ? 0 : 1;
        const auto coordinate = [&](int size) {
            if (random.chance(2))
                return random.pick({INT32_MIN, INT32_MAX, INT32_MIN + 5, INT32_MAX - 5});
            return random.chance(60) ? random.between(0, size) : random.between(-size - 3, size + 3);
        };
        const int dest_x = coordinate(60), dest_y = coordinate(9), src_x = coordinate(60), src_y = coordinate(9);
        const int width = coordinate(70), height = coordinate(12);
        const uint32_t flags = field_flags(random) | (random.chance(10) ? 0xfffffffcu & random.next() : 0);
        call_checked(library().blt, twins_[0].got.bitmap(), dest_x, dest_y, width, height,
                     static_cast<const Bitmap*>(twins_[source].got.bitmap()), src_x, src_y, flags);
        model::bmp_blt(twins_[0].want.bitmap(), dest_x, dest_y, width, height, twins_[source].want.bitmap(), src_x,
                       src_y, flags);
        return "blt to" + number("x", dest_x) + number("y", dest_y) + number("width", width) +
               number("height", height) + " from" + number("x", src_x) + number("y", src_y) + number("flags", flags) +
               number("source", source);
    });
}

// Where words and single bytes would show: every distance within a line, both ways.
TEST_P(RandomCalls, BltWithinOneLine) {
    repeat(9000, [&](Random& random) {
        const int format = random.pick({BMP_FMT_A8, BMP_FMT_PWRW, BMP_FMT_RGBQ});
        twins_[0].make(random, image(random, 90, 3, format, 90 * bytes_per_pixel(format), random.chance(50)),
                       fill_noise);
        const int from = random.between(0, 40), to = from + random.between(-9, 9), width = random.between(1, 60);
        const int down = random.between(0, 1);
        call_checked(library().blt, twins_[0].got.bitmap(), to, down, width, 2,
                     static_cast<const Bitmap*>(twins_[0].got.bitmap()), from, 0, 0u);
        model::bmp_blt(twins_[0].want.bitmap(), to, down, width, 2, twins_[0].want.bitmap(), from, 0, 0);
        return "blt to" + number("x", to) + " from" + number("x", from) + number("width", width);
    });
}

std::string floats(std::initializer_list<float> values) {
    std::string text;
    for (const float value : values) {
        char number[40];
        std::snprintf(number, sizeof number, " %.9g", static_cast<double>(value));
        text += number;
    }
    return text;
}

FrameLayout weight_map(const FrameLayout& layout) {
    FrameLayout map = layout;
    map.format = BMP_FMT_PWRW;
    return map;
}

TEST_P(RandomCalls, AlphaRect) {
    repeat(40000, [&](Random& random) {
        const int width = random.between(0, 70), height = random.between(0, 20);
        twins_[0].make(random, weight_map(image(random, width, height, BMP_FMT_PWRW, 2 * width, random.chance(50), 2)),
                       fill_weights);
        const auto any = random.chance(80) ? ordinary_float : hostile_float;
        const float x = any(random, 70), y = any(random, 20), w = any(random, 70), h = any(random, 20);
        const float radius_x = any(random, 30), radius_y = any(random, 15);
        const uint32_t flags = field_flags(random) | random.pick({0u, 0u, 0x10u, 0x10u, 0x20u, 0x70u}) |
                               (random.chance(40) ? 0x10000u | random.pick({0x20000u, 0x800000u, 0x820000u, 0u}) : 0u) |
                               (random.chance(10) ? 0x40000u : 0u);
        call_checked(library().alpha_rect, twins_[0].got.bitmap(), x, y, w, h, radius_x, radius_y, flags);
        const ModelPrecision precision;
        model::bmp_alpha_rect(twins_[0].want.bitmap(), x, y, w, h, radius_x, radius_y, flags);
        return "alpha_rect" + floats({x, y, w, h, radius_x, radius_y}) + number("flags", flags);
    });
}

TEST_P(RandomCalls, AlphaCircle) {
    repeat(40000, [&](Random& random) {
        const int width = random.between(0, 90), height = random.between(0, 24);
        twins_[0].make(random, weight_map(image(random, width, height, BMP_FMT_PWRW, 2 * width, random.chance(50), 2)),
                       fill_weights);
        const auto any = random.chance(80) ? ordinary_float : hostile_float;
        const float cx = any(random, 90), cy = any(random, 30), radius = any(random, 60);
        const float feather = random.chance(30) ? 0 : any(random, 40);
        const float aspect =
            random.chance(70) ? random.pick({1.0f, 2.0f, 0.5f, 1.0666667f, 1.4222223f}) : any(random, 3);
        const uint32_t flags =
            field_flags(random) | random.pick({0u, 0x40000u}) | (random.chance(10) ? 0xfffbfffcu & random.next() : 0);
        call_checked(library().alpha_circle, twins_[0].got.bitmap(), cx, cy, radius, feather, aspect, flags);
        const ModelPrecision precision;
        model::bmp_alpha_circle(twins_[0].want.bitmap(), cx, cy, radius, feather, aspect, flags);
        return "alpha_circle" + floats({cx, cy, radius, feather, aspect}) + number("flags", flags);
    });
}

TEST_P(RandomCalls, DrawRect) {
    repeat(8000, [&](Random& random) {
        const int format = random.pick({BMP_FMT_RGBQ, BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_PWRW, BMP_FMT_RGB8,
                                        BMP_FMT_RGB8, BMP_FMT_YUY2, BMP_FMT_QUAD3, BMP_FMT_A8});
        const int width = random.chance(90) ? random.between(0, 80) : random.between(81, 700),
                  height = random.between(0, 6);
        twins_[0].make(random, any_layout(random, width, height, format, width * bytes_per_pixel(format)), fill_pixels);
        const auto end = [&](int size) {
            return random.chance(90) ? random.between(-3, size + 3)
                                     : random.pick({0, size, INT32_MAX, INT32_MIN, INT32_MAX - 1});
        };
        const int left = end(width), top = end(height), right = end(width), bottom = end(height);
        const auto color = static_cast<uint32_t>(random.next());
        const uint32_t mode = random.pick({0u, 0u, 0u, 16u, 16u, 32u, 32u, 48u, 1u, 0x10000u});
        expect_clean(library().draw_rect, twins_[0].got.bitmap(), left, top, right, bottom, color, mode);
        model::bmp_draw_rect(twins_[0].want.bitmap(), left, top, right, bottom, color, mode);
        return "draw_rect" + number("format", format) + number("width", width) + number("height", height) +
               number("left", left) + number("top", top) + number("right", right) + number("bottom", bottom) +
               number("mode", mode);
    });
}

TEST_P(RandomCalls, DrawLine) {
    repeat(8000, [&](Random& random) {
        const int format = random.chance(90) ? BMP_FMT_RGB8 : random.between(0, 7);
        const int width = random.chance(80) ? random.between(1, 40) : random.between(41, 400),
                  height = random.chance(80) ? random.between(1, 12) : random.between(13, 90);
        twins_[0].make(random, any_layout(random, width, height, format, width * bytes_per_pixel(format)), fill_pixels);
        const int x0 = random.between(0, width - 1), y0 = random.between(0, height - 1);
        const int x1 = random.chance(20) ? x0 : random.between(0, width - 1),
                  y1 = random.chance(20) ? y0 : random.between(0, height - 1);
        const auto color = static_cast<uint32_t>(random.next());
        const uint32_t mode = random.below(8) << 4 | (random.chance(20) ? 0xffffff8fu : 0);
        expect_clean(library().draw_line, twins_[0].got.bitmap(), x0, y0, x1, y1, color, mode);
        model::bmp_draw_line(twins_[0].want.bitmap(), x0, y0, x1, y1, color, mode);
        return "draw_line" + number("format", format) + number("width", width) + number("height", height) +
               number("x0", x0) + number("y0", y0) + number("x1", x1) + number("y1", y1) + number("mode", mode);
    });
}

ZEPBMP_FOR_ALL_TABLES(RandomCalls);

// Beyond the second-level cache, where stores are streamed unasked.
class LargeFrames : public WithTables {
protected:
    static constexpr int kWidth = 2048, kHeight = 1100;

    void make(int format) {
        for (int i = 0; i < 3; ++i) {
            Random random(round_seed(i));
            FrameLayout layout = {.width = kWidth, .height = kHeight, .format = format, .skew = 0};
            layout.pitch = layout.last_line_bytes = kWidth * bytes_per_pixel(format);
            got_[i].lay_out(layout);
            got_[i].fill(random, i == 2 ? fill_weights : fill_noise);
        }
        want_.copy(got_[0]);
    }

    Frame got_[3] = {Frame(kBytes), Frame(kBytes), Frame(kBytes)};
    Frame want_{kBytes};
    static constexpr size_t kBytes = size_t{kWidth} * kHeight * 2;
};

TEST_P(LargeFrames, ComposeClearCopyAndInterpolate) {
    if (rounds(16) < 16)
        GTEST_SKIP() << "too large for few rounds";
    const UseTables use(GetParam());
    make(BMP_FMT_PWRW);
    for (Frame& frame : got_)
        frame.bitmap()->format = BMP_FMT_YUY2;
    want_.bitmap()->format = BMP_FMT_YUY2;
    Bitmap* const dst = got_[0].bitmap();
    library().compose(dst, dst, got_[1].bitmap(), got_[2].bitmap(), 0);
    model::bmp_compose(want_.bitmap(), want_.bitmap(), got_[1].bitmap(), got_[2].bitmap(), 0, GetParam().arithmetic());
    ASSERT_EQ(got_[0].difference(want_), "");
    library().compose(dst, dst, got_[1].bitmap(), BMP_INTEGER(1234), BMP_COMPOSE_LEVEL);
    model::bmp_compose(want_.bitmap(), want_.bitmap(), got_[1].bitmap(), BMP_INTEGER(1234), BMP_COMPOSE_LEVEL,
                       GetParam().arithmetic());
    ASSERT_EQ(got_[0].difference(want_), "");
    library().interporate(dst, got_[1].bitmap(), 1);
    model::bmp_interporate(want_.bitmap(), got_[1].bitmap(), 1);
    ASSERT_EQ(got_[0].difference(want_), "");
    library().copy(dst, got_[2].bitmap(), 0);
    model::bmp_copy(want_.bitmap(), got_[2].bitmap(), 0);
    ASSERT_EQ(got_[0].difference(want_), "");
    library().clear(dst, BMP_FIELD);
    model::bmp_clear(want_.bitmap(), BMP_FIELD);
    ASSERT_EQ(got_[0].difference(want_), "");
}

ZEPBMP_FOR_ALL_TABLES(LargeFrames);

}  // namespace
}  // namespace zepbmp::test
