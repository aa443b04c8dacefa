#include <memory>

#include "calls.h"

namespace {

struct Destroy {
    void operator()(Bitmap* bitmap) const { bmp_destroy(bitmap); }
};

/// Converts to the pointer that the functions take.
class Picture {
public:
    explicit Picture(int format, uint32_t seed = kTargetSeed, uint32_t create_flags = 0)
        : bitmap_(bmp_create(kWidth, kHeight, format, create_flags)) {
        fill_noise(*bitmap_, seed);
    }
    operator Bitmap*() const { return bitmap_.get(); }

private:
    std::unique_ptr<Bitmap, Destroy> bitmap_;
};

constexpr uint32_t kEven = BMP_FIELD, kOdd = BMP_FIELD | BMP_FIELD_ODD;

class Calls {
public:
    Results make() {
        fills_and_copies();
        compositions();
        shapes();
        polygons();
        rectangles();
        return std::move(results_);
    }

private:
    void keep(const char* name, const Bitmap* bitmap) { results_.push_back(result_of(name, *bitmap)); }

    void fills_and_copies() {
        const Picture picture(BMP_FMT_YUY2), second(BMP_FMT_YUY2, 2), third(BMP_FMT_YUY2, 3);
        bmp_clear(picture, kEven);
        keep("clear", picture);
        bmp_copy(picture, second, kOdd);
        keep("copy", picture);
        bmp_blt(picture, -3, 4, 20, 11, third, 5, -2, kOdd);
        keep("blt", picture);
        bmp_interporate(picture, picture, BMP_FIELD_ODD);
        keep("interporate", picture);

        const Picture rgbq(BMP_FMT_RGBQ), weights(BMP_FMT_PWRW), indices(BMP_FMT_RGB8);
        bmp_draw_rect(rgbq, -5, 2, 9, 100, 0x04030201, 0);
        keep("draw_rect/rgbq", rgbq);
        bmp_draw_rect(weights, 4, 2, 9, 20, 4095, 0);
        keep("draw_rect/pwrw", weights);
        bmp_draw_rect(indices, 4, 2, 20, 20, 0x11, 16);
        bmp_draw_rect(indices, 9, 5, 30, 21, 0x3c, 32);
        keep("draw_rect/rgb8", indices);
        bmp_draw_line(indices, 36, 20, 0, 3, 0xa5, 0x30);
        bmp_draw_line(indices, 0, 20, 36, 20, 7, 0);
        keep("draw_line", indices);
        bmp_set_palette(indices, 200, 0x06070809);
        results_.push_back(palette_of("set_palette", *indices));
    }

    void compositions() {
        for (const int format : {BMP_FMT_YUY2, BMP_FMT_RGBQ}) {
            const bool yuy2 = format == BMP_FMT_YUY2;
            const Picture a(format, 2), b(format, 3), weights(BMP_FMT_PWRW, 4), others(BMP_FMT_PWRW, 5),
                mask(BMP_FMT_A8, 6), dest(format);
            bmp_compose(dest, a, b, weights, 0);
            keep("compose/pwrw", dest);
            bmp_compose(dest, a, b, mask, kEven);
            keep("compose/a8", dest);
            bmp_compose(dest, dest, b, BMP_INTEGER(1234), kOdd | BMP_COMPOSE_LEVEL);
            keep("compose/level", dest);
            bmp_compose_color(dest, a, b, weights, others, yuy2 ? 0x010203 : 0x04030201, kOdd);
            keep("compose_color/band", dest);
            bmp_compose_color(dest, a, nullptr, weights, nullptr, yuy2 ? 0xc86432 : 0x193264c8, kEven);
            keep("compose_color", dest);
        }
    }

    void shapes() {
        const Picture map(BMP_FMT_PWRW);
        bmp_alpha_rect(map, -1.5f, 2.25f, 20, 9.75f, 0, 0, kEven | BMP_SHAPE_ADD);
        keep("alpha_rect/add", map);
        bmp_alpha_rect(map, 3.5f, 4.25f, 10, 9.5f, 0, 0, BMP_SHAPE_MAX);
        keep("alpha_rect/max", map);
        bmp_alpha_rect(map, 10, 3, 22.5f, 15, 4, 5.5f, kOdd | BMP_SHAPE_ELLIPTIC | BMP_SHAPE_ELLIPTIC_EDGES);
        keep("alpha_rect/corners", map);
        bmp_alpha_circle(map, 18, 11, 9.5f, 0, 1, kOdd);
        keep("alpha_circle/hard", map);
        bmp_alpha_circle(map, 18, 11, 9.5f, 4, 1.25f, BMP_SHAPE_COSINE);
        keep("alpha_circle/cosine", map);
    }

    void polygons() {
        const Picture frame(BMP_FMT_YUY2, 2), interlaced(BMP_FMT_YUY2, 3, 2), rgbq_frame(BMP_FMT_RGBQ, 4),
            map(BMP_FMT_PWRW, 5), strength(BMP_FMT_A8, 6);
        const Picture dst(BMP_FMT_YUY2), coverage(BMP_FMT_A8), depth(BMP_FMT_QUAD4), rgbq(BMP_FMT_RGBQ),
            weights(BMP_FMT_PWRW), plane(BMP_FMT_PWRW);
        const std::vector<BmpVertex> corners = quad(), affine = quad(true);
        bmp_map_polygon(dst, nullptr, nullptr, frame, nullptr, corners.data(), 4, 0);
        keep("map_polygon/filtered", dst);
        bmp_map_polygon(dst, coverage, nullptr, interlaced, nullptr, corners.data(), 4, BMP_FIELD_ODD);
        keep("map_polygon/interlaced", dst);
        keep("map_polygon/coverage", coverage);
        bmp_map_polygon(dst, nullptr, depth, frame, nullptr, corners.data(), 4, kOdd | BMP_MAP_NO_FILTER);
        keep("map_polygon/depth", dst);
        keep("map_polygon/depth buffer", depth);
        bmp_map_polygon(rgbq, nullptr, nullptr, rgbq_frame, nullptr, affine.data(), 4, BMP_MAP_ANTIALIAS);
        keep("map_polygon/antialiased", rgbq);
        bmp_map_polygon(weights, nullptr, nullptr, map, nullptr, affine.data(), 4, 0);
        keep("map_polygon/weights", weights);
        bmp_map_polygon(dst, nullptr, nullptr, BMP_INTEGER(0x090807), strength, corners.data(), 4,
                        kEven | BMP_MAP_EXTRA);
        keep("tint_polygon/yuy2", dst);
        bmp_map_polygon(rgbq, nullptr, nullptr, BMP_INTEGER(0x06070809), strength, corners.data(), 4,
                        BMP_MAP_NO_FILTER | BMP_MAP_EXTRA);
        keep("tint_polygon/rgbq", rgbq);
        bmp_map_polygon(dst, plane, nullptr, BMP_INTEGER(0x636261), BMP_INTEGER(3000), corners.data(), 4,
                        kOdd | BMP_MAP_EXTRA | BMP_MAP_SOLID);
        keep("fill_polygon/yuy2", dst);
        keep("fill_polygon/coverage", plane);
        bmp_map_polygon(rgbq, nullptr, nullptr, BMP_INTEGER(0x60616263), BMP_INTEGER(4096), corners.data(), 4,
                        BMP_MAP_EXTRA | BMP_MAP_SOLID);
        keep("fill_polygon/rgbq", rgbq);
    }

    void rectangles() {
        for (const int format : {BMP_FMT_YUY2, BMP_FMT_RGBQ}) {
            const Picture dest(format), map(BMP_FMT_PWRW), source(format, 2, 3);
            bmp_map_rect(dest, map, 2.5f, 1.25f, 30.75f, 19, source, nullptr, -1, 0.5f, 36.5f, 21, kOdd);
            keep("map_rect", dest);
            keep("map_rect/weight map", map);
        }
        const Picture indices(BMP_FMT_RGB8), source(BMP_FMT_RGB8, 2);
        bmp_map_rect(indices, nullptr, 2.5f, 1.25f, 30.75f, 19, source, nullptr, -1, 0.5f, 36.5f, 21, 0);
        keep("map_rect/rgb8", indices);
    }

    Results results_;
};

}  // namespace

Results calls_c() { return Calls().make(); }
