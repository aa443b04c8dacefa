#include "mapping/polygon/antialiased_walk.h"

namespace zepbmp {
namespace {

int32_t sub_line_limit(int32_t height) { return held(height, 0, INT32_MAX / kSubLines) * kSubLines; }

}  // namespace

LineCoverer::Extent AntialiasedWalk::extent_of(const Target& target, const Polygon& polygon) {
    const Bounds bounds(polygon);
    const int32_t width = target.picture.width;
    const auto pixel = [width](float x, int32_t next) {
        return held((hold_to_int32(double{x} * kPixelUnits) >> kPixelBits) + next, 0, width);
    };
    return {{pixel(bounds.left, 0), pixel(bounds.right, 1)}, static_cast<uint64_t>(polygon.count)};
}

uint64_t AntialiasedWalk::bytes(const LineCoverer::Extent& extent, int lines_kept) {
    const uint64_t most = extent.edges;
    return Arena::bytes<Edge>(most) + Arena::bytes<Edge*>(most) + LineCoverer::bytes(extent) +
           static_cast<uint64_t>(lines_kept) * LineCoverer::line_bytes(extent) +
           kSubLines * Arena::bytes<Crossing>(most) + Arena::bytes<EdgeCover>(most);
}

AntialiasedWalk::AntialiasedWalk(Arena& arena, const Target& target, const Polygon& polygon,
                                 const LineCoverer::Extent& extent, int lines_kept)
    : width_(target.picture.width),
      selected_(polygon.flags),
      lines_kept_(lines_kept),
      edges_(arena.array<Edge>(extent.edges)),
      edge_count_(
          build_edges(polygon.vertices, polygon.count, kSubLines, sub_line_limit(target.picture.height), edges_)),
      walk_(edges_, edge_count_, arena.array<Edge*>(extent.edges)),
      coverer_(arena, extent, width_) {
    for (int i = 0; i < lines_kept; ++i)
        covered_[i] = LineCoverer::new_line(arena, extent);
    for (Crossing*& crossings : crossings_)
        crossings = arena.array<Crossing>(extent.edges);
    covers_ = arena.array<EdgeCover>(extent.edges);
}

void AntialiasedWalk::cross_sub_lines() {
    if (walk_.line() == line_ * kSubLines) {
        const int32_t count = walk_.count();
        if (walk_.pass(crossings_)) {
            whole_ = true;
            for (int32_t& of_sub_line : count_)
                of_sub_line = count;
            return;
        }
    }
    whole_ = true;
    for (int sub_line = 0; sub_line < kSubLines; ++sub_line) {
        count_[sub_line] = 0;
        if (walk_.done() || walk_.line() != line_ * kSubLines + sub_line) {
            whole_ = false;
            continue;
        }
        const bool same = walk_.enter();
        whole_ = whole_ && (same || sub_line == 0);
        count_[sub_line] = walk_.count();
        for (int32_t i = 0; i < walk_.count(); ++i)
            crossings_[sub_line][i] = {&walk_[i], walk_[i].x};
        walk_.leave();
    }
}

const EdgeCover* AntialiasedWalk::covers(int sub_line) const {
    for (int32_t i = 0; i < count_[sub_line]; ++i)
        covers_[i] = EdgeCover(crossings_[sub_line][i], whole_ ? kSubLines : 1, width_);
    return covers_;
}

bool AntialiasedWalk::next() {
    do {
        if (walk_.done())
            return false;
        line_ = walk_.line() / kSubLines;
        cross_sub_lines();
    } while (!selected_(line_));
    at_ = at_ + 1 < lines_kept_ ? at_ + 1 : 0;
    if (whole_)
        coverer_.cover(covered_[at_], line_, crossings_[0], count_[0]);
    else
        coverer_.cover_mean(covered_[at_], line_, {crossings_[0], crossings_[1], crossings_[2]}, count_);
    return true;
}

}  // namespace zepbmp
