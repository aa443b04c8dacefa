#include <agg_pixfmt_rgba.h>
#include <agg_rasterizer_scanline_aa.h>
#include <agg_renderer_base.h>
#include <agg_renderer_scanline.h>
#include <agg_scanline_p.h>

#include <utility>

#include "polygon_peers.h"

namespace zepbmp::bench {

Peer agg_fill(FrameShape frame, std::vector<Polygon> polygons, uint32_t color, int level) {
    return {"AGG",
            {frame},
            [=, polygons = std::move(polygons)](const FrameSet& f) {
                agg::rendering_buffer buffer(f[0]->pixels, static_cast<unsigned>(f[0]->width),
                                             static_cast<unsigned>(f[0]->height), f[0]->pitch);
                agg::pixfmt_bgra32 format(buffer);
                agg::renderer_base<agg::pixfmt_bgra32> base(format);
                agg::renderer_scanline_aa_solid<agg::renderer_base<agg::pixfmt_bgra32>> renderer(base);
                renderer.color(agg::rgba8((color >> 16) & 255, (color >> 8) & 255, color & 255,
                                          static_cast<unsigned>((level * 255 + 2048) / 4096)));
                agg::rasterizer_scanline_aa<> rasterizer;
                agg::scanline_p8 scanline;
                for (const Polygon& polygon : polygons) {
                    rasterizer.reset();
                    rasterizer.move_to_d(polygon.front().x, polygon.front().y);
                    for (size_t i = 1; i < polygon.size(); ++i)
                        rasterizer.line_to_d(polygon[i].x, polygon[i].y);
                    rasterizer.close_polygon();
                    agg::render_scanlines(rasterizer, scanline, renderer);
                }
            },
            Picture::kSame};
}

}  // namespace zepbmp::bench
