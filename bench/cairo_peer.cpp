#include <cairo.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "polygon_peers.h"

namespace zepbmp::bench {
namespace {

constexpr int kOpaque = 4096;

struct Release {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using Surface = std::unique_ptr<cairo_surface_t, Release>;
using Context = std::unique_ptr<cairo_t, Release>;
using Pattern = std::unique_ptr<cairo_pattern_t, Release>;

Surface surface_of(const Bitmap& frame, cairo_format_t format) {
    return Surface(cairo_image_surface_create_for_data(frame.pixels, format, frame.width, frame.height, frame.pitch));
}

void fill(cairo_t* context, const Polygon& polygon) {
    cairo_new_path(context);
    for (const BmpVertex& vertex : polygon)
        cairo_line_to(context, vertex.x, vertex.y);
    cairo_close_path(context);
    cairo_fill(context);
}

/// cairo keeps the first error of everything that was done with a context.
void check(cairo_t* context) {
    if (const cairo_status_t status = cairo_status(context))
        throw std::runtime_error(std::string("cairo: ") + cairo_status_to_string(status));
}

}  // namespace

Peer cairo_quad(FrameShape frame, FrameShape texture, const TexturedQuad& quad) {
    const auto& m = quad.to_texture;
    cairo_matrix_t map;
    cairo_matrix_init(&map, m(0, 0), m(1, 0), m(0, 1), m(1, 1), m(0, 2), m(1, 2));
    return {"cairo",
            {frame, texture},
            [map, outline = quad.outline](const FrameSet& f) {
                const Surface to = surface_of(*f[0], CAIRO_FORMAT_RGB24), from = surface_of(*f[1], CAIRO_FORMAT_RGB24);
                const Pattern pattern(cairo_pattern_create_for_surface(from.get()));
                cairo_pattern_set_matrix(pattern.get(), &map);
                cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_BILINEAR);
                cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
                const Context context(cairo_create(to.get()));
                cairo_set_antialias(context.get(), CAIRO_ANTIALIAS_GOOD);
                cairo_set_source(context.get(), pattern.get());
                fill(context.get(), outline);
                check(context.get());
            },
            Picture::kSame};
}

Peer cairo_fill(FrameShape frame, std::vector<Polygon> polygons, uint32_t color, int level) {
    const auto channel = [color](int shift) { return ((color >> shift) & 255) / 255.0; };
    return {"cairo",
            {frame},
            [=, polygons = std::move(polygons)](const FrameSet& f) {
                const Surface to = surface_of(*f[0], CAIRO_FORMAT_ARGB32);
                const Context context(cairo_create(to.get()));
                cairo_set_antialias(context.get(), CAIRO_ANTIALIAS_GOOD);
                cairo_set_operator(context.get(), level == kOpaque ? CAIRO_OPERATOR_SOURCE : CAIRO_OPERATOR_OVER);
                cairo_set_source_rgba(context.get(), channel(16), channel(8), channel(0),
                                      static_cast<double>(level) / kOpaque);
                for (const Polygon& polygon : polygons)
                    fill(context.get(), polygon);
                check(context.get());
            },
            Picture::kSame};
}

}  // namespace zepbmp::bench
