#include "mapping/polygon/antialiased_walk.h"

namespace zepbmp {
namespace {

int32_t sub_line_limit(int32_t height) {
    constexpr int32_t kMost = INT32_MAX / kSubLines;
    return height <= 0 ? 0 : (height < kMost ? height : kMost) * kSubLines;
}

/// The pixels that edges can touch.
PixelRange reach_of(const Edge* edges, int32_t count, int32_t width) {
    int32_t low = INT32_MAX, high = INT32_MIN;
    for (int32_t i = 0; i < count; ++i) {
        low = edges[i].low < low ? edges[i].low : low;
        high = edges[i].high > high ? edges[i].high : high;
    }
    const auto within = [width](int32_t x) { return x < 0 ? 0 : x < width ? x : width; };
    return {within(low >> 12), within((high >> 12) + 1)};
}

}  // namespace

uint64_t AntialiasedWalk::bytes(const Target& target, const Polygon& polygon) {
    const auto most = static_cast<uint64_t>(polygon.count);
    return Arena::bytes<Edge>(most) + Arena::bytes<Edge*>(most) + CoverageLine::bytes(target.picture.width, most) +
           kSubLines * (Arena::bytes<Crossing>(most) + Arena::bytes<EdgeCover>(most));
}

AntialiasedWalk::AntialiasedWalk(Arena& arena, const Target& target, const Polygon& polygon)
    : AntialiasedWalk(arena, target, polygon, static_cast<uint64_t>(polygon.count)) {}

AntialiasedWalk::AntialiasedWalk(Arena& arena, const Target& target, const Polygon& polygon, uint64_t most)
    : width_(target.picture.width),
      selected_(polygon.flags),
      edges_(arena.array<Edge>(most)),
      edge_count_(
          build_edges(polygon.vertices, polygon.count, kSubLines, sub_line_limit(target.picture.height), edges_)),
      walk_(edges_, edge_count_, arena.array<Edge*>(most)),
      coverage_(arena, width_, most, reach_of(edges_, edge_count_, width_)) {
    for (int sub_line = 0; sub_line < kSubLines; ++sub_line) {
        crossings_[sub_line] = arena.array<Crossing>(most);
        covers_[sub_line] = arena.array<EdgeCover>(most);
    }
}

void AntialiasedWalk::cross_sub_lines() {
    for (int sub_line = 0; sub_line < kSubLines; ++sub_line) {
        count_[sub_line] = 0;
        if (walk_.done() || walk_.line() != line_ * kSubLines + sub_line)
            continue;
        walk_.enter();
        for (int32_t i = 0; i < walk_.count(); ++i)
            crossings_[sub_line][i] = {&walk_[i], walk_[i].x};
        count_[sub_line] = walk_.count();
        walk_.leave();
    }
}

bool AntialiasedWalk::is_whole() const {
    for (int sub_line = 1; sub_line < kSubLines; ++sub_line) {
        if (count_[sub_line] != count_[0])
            return false;
        for (int32_t i = 0; i < count_[0]; ++i) {
            if (crossings_[sub_line][i].edge != crossings_[0][i].edge)
                return false;
        }
    }
    return true;
}

void AntialiasedWalk::set_covers(int sub_line, int lines) {
    for (int32_t i = 0; i < count_[sub_line]; ++i)
        covers_[sub_line][i] = EdgeCover(crossings_[sub_line][i], lines, width_);
}

bool AntialiasedWalk::next() {
    do {
        if (walk_.done())
            return false;
        line_ = walk_.line() / kSubLines;
        cross_sub_lines();
    } while (!selected_(line_));
    whole_ = is_whole();
    if (whole_) {
        set_covers(0, kSubLines);
        coverage_.cover(covers_[0], count_[0]);
    } else {
        for (int sub_line = 0; sub_line < kSubLines; ++sub_line)
            set_covers(sub_line, 1);
        coverage_.cover_mean({covers_[0], covers_[1], covers_[2]}, count_);
    }
    return true;
}

}  // namespace zepbmp
