/// \file
/// Textured polygons, line by line.
#include "mapping/polygon/arena.h"
#include "mapping/polygon/edge_walk.h"
#include "mapping/polygon/plane.h"
#include "mapping/polygon/polygon.h"
#include "mapping/polygon/span_batch.h"

namespace zepbmp {
namespace {

void draw_lines(const Target& target, const Bitmap* depth, const Texture& texture, uint32_t tint,
                const KernelChoice& kernels, const Polygon& polygon) {
    const auto most = static_cast<uint64_t>(polygon.count);
    Arena arena;
    if (!arena.reserve(Arena::bytes<Edge>(most) + Arena::bytes<Edge*>(most) + Arena::bytes<EdgeMapping>(most)))
        return;
    Edge* const edges = arena.array<Edge>(most);
    const int32_t count = build_edges(polygon.vertices, polygon.count, 1, target.picture.height, edges);
    const SelectedLines selected(polygon.flags);
    const auto later = [&](const Bitmap& bitmap) {
        return ptrdiff_t{bitmap.pitch} * selected.step() * kLaterPixelLines;
    };
    const SpanDrawer spans(texture, kernels, polygon, 1, edges, count, arena.array<EdgeMapping>(most));
    SpanBatch batch(spans);
    const Plane plane(target.plane);

    for (EdgeWalk walk(edges, count, arena.array<Edge*>(most)); !walk.done(); walk.leave()) {
        walk.enter();
        const int32_t line = walk.line();
        if (!selected(line))
            continue;
        for (int32_t i = 0; i + 1 < walk.count(); i += 2) {
            const Crossing left = {&walk[i], walk[i].x}, right = {&walk[i + 1], walk[i + 1].x};
            const PixelRange pixels = pixels_between(left.x, right.x, target.picture.width);
            if (pixels.empty())
                continue;
            plane.mark(line, pixels);
            Span span = spans.between(left, right, line, pixels);
            span.line = line_address(target.picture, line);
            span.later_pixels = later(target.picture);
            span.color = tint;
            if (depth) {  // summed up from the span's first pixel on: in one piece
                span.later_depths = later(*depth);
                span.depth = reinterpret_cast<float*>(line_address(*depth, line));
                spans.draw(span);
            } else {
                batch.add(span);
            }
        }
    }
    batch.draw();
}

}  // namespace

void draw_textured(const Target& target, const Bitmap* depth, const Bitmap& bitmap, uint32_t tint,
                   const Polygon& polygon) {
    const KernelChoice kernels = choose_kernels(target.picture, bitmap, depth != nullptr, polygon);
    const Texture texture = texture_of(bitmap, polygon.flags);
    if (kernels.group == kNoGroup || texture.columns < 1 || texture.rows < 1 ||
        !is_finite(polygon.vertices, polygon.count))
        return;
    if (kernels.antialiased)
        draw_antialiased(target, texture, kernels, polygon);
    else
        draw_lines(target, depth, texture, tint, kernels, polygon);
}

}  // namespace zepbmp
