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

/// The format of depth buffers: floats.
constexpr int32_t kDepths = BMP_FMT_QUAD3;

/// One line of bytes, for memcpy and its like.
FrameShape raw_bytes(double bytes);

struct DestroyBitmap {
    void operator()(Bitmap* bitmap) const { bmp_destroy(bitmap); }
};
using Frame = std::unique_ptr<Bitmap, DestroyBitmap>;

/// The frames of one call; the first ones are written, the others are read.
using FrameSet = std::vector<Bitmap*>;

size_t stored_bytes(const Bitmap& frame);   ///< of its lines, padding included
Frame make_frame(const FrameShape& shape);  ///< uninitialised; throws std::bad_alloc
Frame clone(const Bitmap& frame);

/// Waves in every channel, another picture for each `role`, opaque: where two programs round apart, they differ by a
/// step or two, where they sample or filter apart, by more. YUY2 chroma, which everybody filters in their own way,
/// has no fine waves.
void paint_waves(Bitmap& frame, size_t role);

/// A YUY2 frame's bytes as its luma, then pairs of chroma, and back. Lines without padding only.
void to_semi_planar(Bitmap& frame);
void from_semi_planar(Bitmap& frame);

/// Rings take their frames from here, so that those of one subject share them. A frame that is written never serves as
/// a source: sources stay random.
class FramePool {
public:
    /// Frame `index` for the place `role` of a call: random bytes; in PWRW weights 0..4096, in A8 masks 0..128, in
    /// kDepths depths of 0 to 1.
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

/// Twice the last-level cache, at least 600 MB. A 32-bit process, which holds two at a time, makes do with 900 MB.
size_t ring_bytes();

}  // namespace zepbmp::bench
