/// \file
/// Any bytes become calls of zepbmp.hpp with any arguments at all. Each is either refused with an ArgumentError, and
/// has touched nothing then, or it is made, and writes to no bitmap but those that it is given to write. The bytes
/// behind a bitmap's last line are poisoned.
///
/// Bitmaps come from a small pool, most of one size, so that many calls are made.
#include <sanitizer/allocator_interface.h>
#include <sanitizer/asan_interface.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/harness.h"
#include "fuzz/input.h"
#include "zepbmp.hpp"

namespace {

using zepbmp::Field;
using zepbmp::Format;
using zepbmp::Parity;
using zepbmp::fuzz::fail;
using zepbmp::fuzz::Input;

// ---------------------------------------------------------------- arguments

/// Most are in reach of a small bitmap.
int any_int(Input& input) {
    const uint32_t kind = input.take(1);
    if (kind < 192)
        return static_cast<int>(kind % 48) - (kind < 144 ? 0 : 40);
    if (kind < 224)
        return static_cast<int16_t>(input.take(2));
    constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
    constexpr int kExtremes[] = {kLeast, kLeast + 1, kMost, kMost - 1, -1, 4096, 4097, 255, 256, 65536};
    if (kind < 240)
        return kExtremes[input.take(1) % std::size(kExtremes)];
    return static_cast<int>(input.take(4));
}

float any_float(Input& input) {
    const uint32_t kind = input.take(1);
    if (kind < 128)
        return static_cast<float>(kind % 48);
    if (kind < 208)
        return input.fixed();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kExtremes[] = {kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN(),
                                   -0.0f,     1e-45f,     -1e-45f,
                                   3e38f,     -3e38f,     262144,
                                   524288,    -524288,    524288.06f,
                                   174762,    33554432};
    if (kind < 232)
        return kExtremes[input.take(1) % std::size(kExtremes)];
    return input.bits();
}

/// Of the values that there are, seldom another one.
template <class Choice>
Choice any_of(Input& input, std::initializer_list<Choice> choices) {
    const uint32_t kind = input.take(1);
    return kind < 248 ? choices.begin()[kind % choices.size()] : static_cast<Choice>(input.take(4));
}
Field any_field(Input& input) { return any_of(input, {Field::both, Field::even, Field::odd}); }

zepbmp::Point any_point(Input& input) {
    const int x = any_int(input);
    return {x, any_int(input)};
}
zepbmp::Size any_size(Input& input) {
    const int width = any_int(input);
    return {width, any_int(input)};
}
zepbmp::Box any_box(Input& input) {
    const zepbmp::Point from = any_point(input), to = any_point(input);
    return {from.x, from.y, to.x, to.y};
}
zepbmp::FloatBox any_float_box(Input& input) {
    zepbmp::FloatBox box;
    for (float* const side : {&box.x0, &box.y0, &box.x1, &box.y1})
        *side = any_float(input);
    return box;
}
/// Mostly one whose ends lie inside the bitmap: else nearly every call of map_rect would be refused.
zepbmp::FloatBox any_float_box(Input& input, const zepbmp::Bitmap& bitmap) {
    const uint32_t kind = input.take(1);
    if (kind >= 232 || bitmap.empty())
        return any_float_box(input);
    const auto part = [&](int size) { return static_cast<float>(size) * static_cast<float>(input.take(1)) / 255; };
    zepbmp::FloatBox box = {0, 0, static_cast<float>(bitmap.width()), static_cast<float>(bitmap.height())};
    if (kind & 1)
        box.x1 = part(bitmap.width()), box.y1 = part(bitmap.height());
    if (kind & 2)
        box.x0 = box.x1 - std::abs(input.fixed()), box.y0 = box.y1 - std::abs(input.fixed());
    if (kind & 4)
        box.x0 = part(bitmap.width()), box.y0 = part(bitmap.height());
    return box;
}
zepbmp::FloatRect any_float_rect(Input& input) {
    const zepbmp::FloatBox box = any_float_box(input);
    return {box.x0, box.y0, box.x1, box.y1};
}

std::vector<zepbmp::Vertex> any_vertices(Input& input) {
    std::vector<zepbmp::Vertex> vertices(input.take(1) % 8);
    const bool affine = input.take(1) < 64;
    for (zepbmp::Vertex& vertex : vertices) {
        for (float* const part : {&vertex.u, &vertex.v, &vertex.x, &vertex.y})
            *part = any_float(input);
        vertex.w = affine ? 1 : any_float(input);
    }
    return vertices;
}

// ---------------------------------------------------------------- bitmaps

/// What lies behind the last line belongs to the bitmap's block; nobody may touch it.
void poison_end(const ::Bitmap& record) {
    void* allocation;  // stands in the word before the record
    std::memcpy(&allocation, reinterpret_cast<const char*>(&record) - sizeof allocation, sizeof allocation);
    const auto* const end = reinterpret_cast<const char*>(allocation) + __sanitizer_get_allocated_size(allocation);
    const auto* const lines_end =
        reinterpret_cast<const char*>(record.pixels) + record.pitch * ptrdiff_t{record.height};
    __asan_poison_memory_region(lines_end, static_cast<size_t>(end - lines_end));
}

/// A bitmap, and what it held before a call.
class Slot {
public:
    Slot(int width, int height, Format format, zepbmp::Scan scan, uint32_t seed)
        : bitmap_(width, height, format, scan, zepbmp::Contents::as_allocated) {
        uint64_t state = seed * 0x9e3779b97f4a7c15u + 1;
        for (int y = 0; y < height; ++y)
            for (uint8_t& byte : bitmap_.line(y)) {
                state = state * 6364136223846793005u + 1442695040888963407u;
                byte = static_cast<uint8_t>(state >> 56);
            }
        poison_end(*bitmap_.record());
    }

    zepbmp::Bitmap& bitmap() { return bitmap_; }

    void remember() {
        record_ = *bitmap_.record();
        bytes_.assign(record_.pixels, record_.pixels + size());
    }
    void expect_same_record() const {
        ::Bitmap now = *bitmap_.record();
        now.dib_info = record_.dib_info;
        if (std::memcmp(&now, &record_, sizeof now) != 0)
            fail("a record has changed");
    }
    void expect_same_bytes(const char* why) const {
        if (size() > 0 && std::memcmp(record_.pixels, bytes_.data(), size()) != 0)
            fail(why);
    }

private:
    size_t size() const { return static_cast<size_t>(record_.pitch) * static_cast<size_t>(record_.height); }

    zepbmp::Bitmap bitmap_;
    ::Bitmap record_;
    std::vector<uint8_t> bytes_;
};

constexpr Format kPool[] = {Format::yuy2,  Format::yuy2,  Format::yuy2, Format::rgbq, Format::rgbq, Format::rgbq,
                            Format::pwrw,  Format::pwrw,  Format::pwrw, Format::a8,   Format::a8,   Format::quad3,
                            Format::quad4, Format::quad5, Format::rgb8, Format::rgb8};

class Pool {
public:
    explicit Pool(Input& input) : input_(input) {
        const uint32_t width = input.take(1), height = input.take(1);
        size_ = {static_cast<int>(width < 224 ? width % 48 : width), static_cast<int>(height % 20)};
        seed_ = input.take(1);
    }

    /// Most often one of these formats, with the pool's size. Made when it is asked for; it lives as long as the pool.
    zepbmp::Bitmap& any(std::initializer_list<Format> formats) {
        const uint32_t byte = input_.take(1);
        if (byte >= 252)
            return empty_;
        size_t at = byte % std::size(kPool);
        if (byte < 232) {
            const Format wanted = formats.begin()[byte % formats.size()];
            for (at = byte / 16 % std::size(kPool); kPool[at] != wanted;)
                at = (at + 1) % std::size(kPool);
        }
        std::optional<Slot>& slot = slots_[at];
        if (!slot)
            make(slot, kPool[at]);
        return slot->bitmap();
    }
    zepbmp::Bitmap& any_color() { return any({Format::yuy2, Format::rgbq}); }
    zepbmp::Bitmap* maybe(std::initializer_list<Format> formats) {
        return input_.take(1) % 3 == 0 ? nullptr : &any(formats);
    }

    void remember() {
        for (std::optional<Slot>& slot : slots_)
            if (slot)
                slot->remember();
    }
    void expect_untouched(const char* why, std::initializer_list<const zepbmp::Bitmap*> written = {}) {
        for (std::optional<Slot>& slot : slots_) {
            if (!slot)
                continue;
            slot->expect_same_record();
            bool is_written = false;
            for (const zepbmp::Bitmap* each : written)
                is_written |= each == &slot->bitmap();
            if (!is_written)
                slot->expect_same_bytes(why);
        }
    }

private:
    void make(std::optional<Slot>& slot, Format format) {
        const uint32_t byte = input_.take(1);
        zepbmp::Size size = size_;
        if (byte >= 240) {
            size.width = static_cast<int>(input_.take(1) % 64);
            size.height = static_cast<int>(input_.take(1) % 24);
        }
        constexpr zepbmp::Scan kScans[] = {zepbmp::Scan::progressive, zepbmp::Scan::interlaced,
                                           zepbmp::Scan::interlaced_2};
        slot.emplace(size.width, size.height, format, kScans[byte % std::size(kScans)], ++seed_);
    }

    Input& input_;
    zepbmp::Size size_;
    uint32_t seed_;
    std::array<std::optional<Slot>, std::size(kPool)> slots_;
    zepbmp::Bitmap empty_ = [] {
        zepbmp::Bitmap bitmap(0, 0, Format::a8);
        const zepbmp::Bitmap elsewhere = std::move(bitmap);
        return bitmap;
    }();
};

// ---------------------------------------------------------------- calls

/// How many calls have been made, and refused; told at the end.
struct Tally {
    struct Count {
        uint64_t made = 0, refused = 0;
    };
    std::map<std::string, Count> calls;
    ~Tally() {
        for (const auto& [name, count] : calls)
            std::fprintf(stderr, "calls::%-16s %10llu made %10llu refused\n", name.c_str(),
                         static_cast<unsigned long long>(count.made), static_cast<unsigned long long>(count.refused));
    }
} tally;

void check_message(const zepbmp::ArgumentError& error) {
    const std::string what = error.what();
    std::string joined(error.operation());
    joined.append(": ").append(error.argument()).append(" is ").append(error.value()).append(", ");
    joined.append(error.rule());
    if (joined != what || error.argument().empty() || error.value().empty() || error.rule().empty())
        fail("an error's parts are not its message");
}

/// Makes a call, or has it refused; `written` is what it may write.
template <class Call>
void run(const char* name, Pool& pool, std::initializer_list<const zepbmp::Bitmap*> written, Call call) {
    pool.remember();
    try {
        call();
    } catch (const zepbmp::ArgumentError& error) {
        ++tally.calls[name].refused;
        check_message(error);
        pool.expect_untouched("a call that was refused has written");
        return;
    }
    ++tally.calls[name].made;
    pool.expect_untouched("a bitmap that is only read has been written", written);
}

/// Sizes that a program may come upon; no memory is asked for that is not there.
void make_bitmap(Input& input, Pool& pool) {
    zepbmp::Size size = any_size(input);
    if (int64_t{size.width} * size.height > 1 << 20 && size.width < 1 << 29)
        size.height %= 16;
    if (int64_t{size.width} * size.height > 1 << 22)
        size.width = std::numeric_limits<int>::max();
    const auto format = any_of(input, {Format::yuy2, Format::rgbq, Format::pwrw, Format::quad3, Format::quad4,
                                       Format::quad5, Format::rgb8, Format::a8});
    const auto scan = any_of(input, {zepbmp::Scan::progressive, zepbmp::Scan::interlaced, zepbmp::Scan::interlaced_2});
    const auto contents = any_of(input, {zepbmp::Contents::zero, zepbmp::Contents::as_allocated});
    run("Bitmap", pool, {}, [&] {
        zepbmp::Bitmap bitmap(size.width, size.height, format, scan, contents);
        zepbmp::Bitmap moved = std::move(bitmap);
        const zepbmp::Bitmap adopted = zepbmp::Bitmap::adopt(moved.release());
        if (adopted.width() != size.width || adopted.height() != size.height || adopted.format() != format)
            fail("a bitmap is not what was asked for");
    });
}

void touch(std::span<const uint8_t> bytes) {
    uint8_t sum = 0;
    for (const uint8_t byte : bytes)
        sum = static_cast<uint8_t>(sum + byte);
    [[maybe_unused]] static volatile uint8_t kept;
    kept = sum;
}

template <class Element>
void touch_row(std::span<Element> row) {
    touch({reinterpret_cast<const uint8_t*>(row.data()), row.size_bytes()});
}

void read_pixels(Input& input, Pool& pool) {
    const zepbmp::Bitmap& bitmap = pool.any({Format::yuy2, Format::rgbq, Format::pwrw, Format::quad3, Format::rgb8});
    const zepbmp::Point at = any_point(input);
    const uint32_t which = input.take(1) % 7;
    run("row", pool, {}, [&] {
        switch (which) {
            case 0: touch_row(bitmap.row<Format::yuy2>(at.y)); break;
            case 1: touch_row(bitmap.row<Format::rgbq>(at.y)); break;
            case 2: touch_row(bitmap.row<Format::pwrw>(at.y)); break;
            case 3: touch_row(bitmap.row<Format::rgb8>(at.y)); break;
            case 4: touch_row(bitmap.depth_row(at.y)); break;
            case 5: touch(bitmap.line(at.y)); break;
            default: touch({bitmap.pointer(at.x, at.y), static_cast<size_t>(bitmap.bytes_per_pixel())});
        }
    });
}

zepbmp::PolygonOptions any_polygon_options(Input& input, Pool& pool) {
    using zepbmp::Sampling;
    zepbmp::PolygonOptions options;
    options.field = any_field(input);
    options.sampled = any_of(input, {Parity::even, Parity::odd});
    options.sampling = any_of(input, {Sampling::filtered, Sampling::nearest, Sampling::filtered_antialiased});
    options.coverage = pool.maybe({Format::a8, Format::pwrw});
    options.depth = input.take(1) % 2 ? pool.maybe({Format::quad3, Format::quad4, Format::quad5}) : nullptr;
    return options;
}

void any_call(Input& input, Pool& pool) {
    using zepbmp::PaletteIndex;
    const uint32_t color = input.take(1) * 0x01030507u;
    switch (input.take(1) % 26) {
        case 0: make_bitmap(input, pool); break;
        case 1: read_pixels(input, pool); break;
        case 2: {
            zepbmp::Bitmap& bitmap = pool.any_color();
            const Field field = any_field(input);
            run("clear", pool, {&bitmap}, [&] { zepbmp::clear(bitmap, field); });
            break;
        }
        case 3: {
            zepbmp::Bitmap &to = pool.any_color(), &from = pool.any_color();
            const Field field = any_field(input);
            run("copy", pool, {&to}, [&] { zepbmp::copy(to, from, field); });
            break;
        }
        case 4:
        case 5: {
            zepbmp::Bitmap &to = pool.any_color(), &from = pool.any_color();
            const zepbmp::Point dest = any_point(input);
            const zepbmp::Size size = any_size(input);
            const zepbmp::Point src = any_point(input);
            const Field field = any_field(input);
            run("blt", pool, {&to}, [&] { zepbmp::blt(to, dest, size, from, src, field); });
            break;
        }
        case 6: {
            zepbmp::Bitmap &to = pool.any_color(), &from = pool.any_color();
            const auto field = any_of(input, {Parity::even, Parity::odd});
            run("interporate", pool, {&to}, [&] { zepbmp::interporate(to, from, field); });
            break;
        }
        case 7: {
            zepbmp::Bitmap& bitmap = pool.any({Format::rgbq, Format::pwrw, Format::rgb8});
            const zepbmp::Box box = any_box(input);
            const int value = any_int(input);
            const auto mode = any_of(input, {zepbmp::RectMode::bit_or, zepbmp::RectMode::bit_and});
            const uint32_t kind = input.take(1) % 3;
            run("draw_rect", pool, {&bitmap}, [&] {
                if (kind == 0)
                    zepbmp::draw_rect(bitmap, box, zepbmp::Rgbq::unpacked(color));
                else if (kind == 1)
                    zepbmp::draw_rect(bitmap, box, zepbmp::Weight(value));
                else
                    zepbmp::draw_rect(bitmap, box, PaletteIndex(value), mode);
            });
            break;
        }
        case 8: {
            using zepbmp::LineMode;
            zepbmp::Bitmap& bitmap = pool.any({Format::rgb8});
            const zepbmp::Point from = any_point(input), to = any_point(input);
            const int value = any_int(input);
            const auto mode = any_of(input, {LineMode::set, LineMode::bit_or, LineMode::bit_and, LineMode::bit_xor});
            run("draw_line", pool, {&bitmap}, [&] { zepbmp::draw_line(bitmap, from, to, PaletteIndex(value), mode); });
            break;
        }
        case 9: {
            const auto rgbq = zepbmp::Rgbq::unpacked(color & 0xffffff);
            if (zepbmp::translate_color(zepbmp::translate_color(rgbq)) != rgbq)
                fail("a colour does not come back");
            break;
        }
        case 10: {
            zepbmp::Bitmap& bitmap = pool.any({Format::rgb8});
            const int index = any_int(input);
            run("set_palette", pool, {},
                [&] { zepbmp::set_palette(bitmap, PaletteIndex(index), zepbmp::Rgbq::unpacked(color)); });
            break;
        }
        case 11: {
            zepbmp::Bitmap& bitmap = pool.any_color();
            const zepbmp::Point dest = any_point(input);
            const zepbmp::Size size = any_size(input);
            const zepbmp::Point src = any_point(input);
            run("display", pool, {}, [&] { zepbmp::display(nullptr, dest, size, bitmap, src.x, src.y); });
            break;
        }
        case 12:
        case 13: {
            zepbmp::Bitmap &dest = pool.any_color(), &src1 = pool.any_color(), &src2 = pool.any_color();
            const zepbmp::Bitmap& mask = pool.any({Format::pwrw, Format::a8});
            const Field field = any_field(input);
            run("compose", pool, {&dest}, [&] { zepbmp::compose(dest, src1, src2, mask, field); });
            break;
        }
        case 14: {
            zepbmp::Bitmap &dest = pool.any_color(), &src1 = pool.any_color(), &src2 = pool.any_color();
            const int level = any_int(input);
            const Field field = any_field(input);
            run("compose/level", pool, {&dest},
                [&] { zepbmp::compose(dest, src1, src2, zepbmp::Level(level), field); });
            break;
        }
        case 15:
        case 16: {
            zepbmp::Bitmap &dest = pool.any_color(), &src1 = pool.any_color(), &src2 = pool.any_color();
            const zepbmp::Bitmap &mask1 = pool.any({Format::pwrw}), &mask2 = pool.any({Format::pwrw});
            const Field field = any_field(input);
            const uint32_t kind = input.take(1) % 4;
            run("compose_color", pool, {&dest}, [&] {
                switch (kind) {
                    case 0:
                        zepbmp::compose_color(dest, src1, src2, mask1, mask2, zepbmp::Yuv::unpacked(color), field);
                        break;
                    case 1:
                        zepbmp::compose_color(dest, src1, src2, mask1, mask2, zepbmp::Rgbq::unpacked(color), field);
                        break;
                    case 2: zepbmp::compose_color(dest, src1, mask1, zepbmp::Yuv::unpacked(color), field); break;
                    default: zepbmp::compose_color(dest, src1, mask1, zepbmp::Rgbq::unpacked(color), field);
                }
            });
            break;
        }
        case 17:
        case 18: {
            zepbmp::Bitmap& map = pool.any({Format::pwrw});
            const zepbmp::FloatRect rect = any_float_rect(input);
            const float radius_x = any_float(input), radius_y = any_float(input);
            const auto mode = any_of(input, {zepbmp::ShapeMode::add, zepbmp::ShapeMode::maximum});
            const Field field = any_field(input);
            if (input.take(1) % 2)
                run("alpha_rect", pool, {&map}, [&] { zepbmp::alpha_rect(map, rect, mode, field); });
            else
                run("alpha_rect/round", pool, {&map}, [&] {
                    zepbmp::alpha_rect(map, rect, zepbmp::CornerRadii{radius_x, radius_y}, field);
                });
            break;
        }
        case 19:
        case 20: {
            zepbmp::Bitmap& map = pool.any({Format::pwrw});
            const zepbmp::FloatRect centre = any_float_rect(input);
            const float aspect = input.take(1) % 2 ? any_float(input) : 1;
            const zepbmp::Circle circle = {centre.x, centre.y, centre.width, centre.height, aspect};
            const auto ramp = any_of(input, {zepbmp::Ramp::linear, zepbmp::Ramp::cosine});
            const Field field = any_field(input);
            run("alpha_circle", pool, {&map}, [&] { zepbmp::alpha_circle(map, circle, ramp, field); });
            break;
        }
        case 21: {
            zepbmp::Bitmap &dst = pool.any({Format::yuy2, Format::rgbq, Format::pwrw}),
                           &source = pool.any({Format::yuy2, Format::rgbq, Format::pwrw});
            const zepbmp::PolygonOptions options = any_polygon_options(input, pool);
            const std::vector<zepbmp::Vertex> vertices = any_vertices(input);
            run("map_polygon", pool, {&dst, options.coverage, options.depth},
                [&] { zepbmp::map_polygon(dst, source, vertices, options); });
            break;
        }
        case 22: {
            zepbmp::Bitmap &dst = pool.any_color(), &strength = pool.any({Format::a8});
            const zepbmp::PolygonOptions options = any_polygon_options(input, pool);
            const std::vector<zepbmp::Vertex> vertices = any_vertices(input);
            const bool yuv = input.take(1) % 2;
            run("tint_polygon", pool, {&dst, options.coverage}, [&] {
                if (yuv)
                    zepbmp::tint_polygon(dst, strength, zepbmp::Yuv::unpacked(color), vertices, options);
                else
                    zepbmp::tint_polygon(dst, strength, zepbmp::Rgbq::unpacked(color), vertices, options);
            });
            break;
        }
        case 23: {
            zepbmp::Bitmap& dst = pool.any_color();
            const zepbmp::FillOptions options = {any_field(input), pool.maybe({Format::a8, Format::pwrw})};
            const std::vector<zepbmp::Vertex> vertices = any_vertices(input);
            const int level = any_int(input);
            const bool yuv = input.take(1) % 2;
            run("fill_polygon", pool, {&dst, options.coverage}, [&] {
                if (yuv)
                    zepbmp::fill_polygon(dst, zepbmp::Yuv::unpacked(color), zepbmp::Level(level), vertices, options);
                else
                    zepbmp::fill_polygon(dst, zepbmp::Rgbq::unpacked(color), zepbmp::Level(level), vertices, options);
            });
            break;
        }
        default: {
            zepbmp::Bitmap &dest = pool.any({Format::yuy2, Format::rgbq, Format::rgb8}),
                           &src = pool.any({dest.empty() ? Format::yuy2 : dest.format()});
            const bool is_indexed = !dest.empty() && dest.format() == Format::rgb8;
            zepbmp::Bitmap* const map = is_indexed != (input.take(1) < 16) ? nullptr : &pool.any({Format::pwrw});
            const zepbmp::FloatBox to = any_float_box(input, dest), from = any_float_box(input, src);
            const Field field = any_field(input);
            run("map_rect", pool, {&dest, map}, [&] {
                if (map)
                    zepbmp::map_rect(dest, *map, to, src, from, field);
                else
                    zepbmp::map_rect(dest, to, src, from, field);
            });
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    zepbmp::fuzz::other_tables(input).select();
    Pool pool(input);
    constexpr int kMostCalls = 6;
    int calls = 0;
    do
        any_call(input, pool);
    while (!input.empty() && ++calls < kMostCalls);
    return 0;
}
