/// \file
/// Random frames, and rings of them that no cache holds.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "zepbmp.h"

namespace zepbmp::bench {

struct FrameShape {
    int32_t format, width, height;

    auto operator<=>(const FrameShape&) const = default;
};

/// One line of bytes, for memcpy and its like.
FrameShape raw_bytes(double bytes);

struct DestroyBitmap {
    void operator()(Bitmap* bitmap) const { bmp_destroy(bitmap); }
};
using Frame = std::unique_ptr<Bitmap, DestroyBitmap>;

/// The frames of one call; the first is written, the others are read.
using FrameSet = std::vector<Bitmap*>;

size_t stored_bytes(const Bitmap& frame);   ///< of its lines, padding included
Frame make_frame(const FrameShape& shape);  ///< uninitialised; throws std::bad_alloc
Frame clone(const Bitmap& frame);

/// Rings take their frames from here, so that those of one subject share them. A frame that is written never serves as
/// a source: sources stay random.
class FramePool {
public:
    /// Frame `index` for the place `role` of a call: random bytes; in PWRW weights 0..4096, in A8 masks 0..128.
    Bitmap* frame(size_t role, const FrameShape& shape, size_t index);

private:
    std::map<std::pair<size_t, FrameShape>, std::vector<Frame>> frames_;
    std::mt19937_64 random_{20};
};

/// The sets that a row's calls go through in turn.
class Ring {
public:
    /// Sets enough to span `bytes`, at least one.
    Ring(FramePool& pool, const std::vector<FrameShape>& shapes, size_t bytes);

    const FrameSet& first() const { return sets_.front(); }
    const FrameSet& next() {
        const FrameSet& set = sets_[at_];
        at_ = at_ + 1 < sets_.size() ? at_ + 1 : 0;
        return set;
    }

private:
    std::vector<FrameSet> sets_;
    size_t at_ = 0;
};

/// Twice the last-level cache, at least 600 MB.
size_t ring_bytes();

}  // namespace zepbmp::bench
