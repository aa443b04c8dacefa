#include <pixman.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "polygon_peers.h"

namespace zepbmp::bench {
namespace {

struct Release {
    void operator()(pixman_image_t* image) const { pixman_image_unref(image); }
    void operator()(pixman_fixed_t* values) const { std::free(values); }
};
using Image = std::unique_ptr<pixman_image_t, Release>;

Image held(pixman_image_t* image) {
    if (!image)
        throw std::bad_alloc();
    return Image(image);
}

Image image_of(const Bitmap& frame, pixman_format_code_t format) {
    return held(pixman_image_create_bits_no_clear(format, frame.width, frame.height,
                                                  reinterpret_cast<uint32_t*>(frame.pixels), frame.pitch));
}

Image solid(uint32_t color) {
    const auto channel = [&](int shift) { return static_cast<uint16_t>(((color >> shift) & 255) * 257); };
    const pixman_color_t opaque = {channel(16), channel(8), channel(0), 0xffff};
    return held(pixman_image_create_solid_fill(&opaque));
}

/// The pixels whose centres a convex polygon holds.
class Region {
public:
    Region(const Polygon& polygon, FrameShape frame) {
        std::vector<pixman_box32_t> lines;
        for (int32_t y = 0; y < frame.height; ++y) {
            const double center = y + 0.5;
            double left = frame.width, right = 0;
            for (size_t i = 0; i < polygon.size(); ++i) {
                const BmpVertex &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
                if ((a.y <= center) == (b.y <= center))
                    continue;
                const double x = a.x + (center - a.y) * (b.x - a.x) / (b.y - a.y);
                left = std::min(left, x);
                right = std::max(right, x);
            }
            const auto first = std::max(static_cast<int32_t>(std::ceil(left - 0.5)), 0);
            const auto end = std::min(static_cast<int32_t>(std::ceil(right - 0.5)), frame.width);
            if (first < end)
                lines.push_back({first, y, end, y + 1});
        }
        if (!pixman_region32_init_rects(&region_, lines.data(), static_cast<int>(lines.size())))
            throw std::bad_alloc();
    }
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;
    ~Region() { pixman_region32_fini(&region_); }

    void clip(pixman_image_t* image) const {
        if (!pixman_image_set_clip_region32(image, const_cast<pixman_region32_t*>(&region_)))
            throw std::bad_alloc();
    }

private:
    pixman_region32_t region_;
};

/// How a texture is looked at.
class Sampler {
public:
    Sampler(const TexturedQuad& quad, Sampling sampling) {
        pixman_f_transform_t map;
        std::copy_n(quad.to_texture.entries, 9, &map.m[0][0]);
        if (!pixman_transform_from_pixman_f_transform(&transform_, &map))
            throw std::runtime_error("a map does not fit pixman's 16.16 matrix");
        switch (sampling) {
            case Sampling::kNearest: filter_ = PIXMAN_FILTER_NEAREST; break;
            case Sampling::kBilinear: filter_ = PIXMAN_FILTER_BILINEAR; break;
            case Sampling::kBox2: convolve(2); break;
            case Sampling::kBox4: convolve(4); break;
        }
    }

    void set(pixman_image_t* texture) const {
        if (!pixman_image_set_transform(texture, &transform_) ||
            !pixman_image_set_filter(texture, filter_, values_.get(), value_count_))
            throw std::bad_alloc();
    }

private:
    void convolve(int texels) {
        constexpr int kPhaseBits = 7;
        const pixman_fixed_t scale = pixman_int_to_fixed(texels);
        filter_ = PIXMAN_FILTER_SEPARABLE_CONVOLUTION;
        values_.reset(pixman_filter_create_separable_convolution(&value_count_, scale, scale, PIXMAN_KERNEL_BOX,
                                                                 PIXMAN_KERNEL_BOX, PIXMAN_KERNEL_BOX,
                                                                 PIXMAN_KERNEL_BOX, kPhaseBits, kPhaseBits));
        if (!values_)
            throw std::bad_alloc();
    }

    pixman_transform_t transform_;
    pixman_filter_t filter_;
    std::unique_ptr<pixman_fixed_t, Release> values_;
    int value_count_ = 0;
};

struct Quad {
    Region region;
    Sampler sampler;
};

std::shared_ptr<const Quad> prepared(const TexturedQuad& quad, FrameShape frame, Sampling sampling) {
    return std::shared_ptr<const Quad>(new Quad{{quad.outline, frame}, {quad, sampling}});
}

}  // namespace

Peer pixman_quad(FrameShape frame, FrameShape texture, const TexturedQuad& textured, Sampling sampling) {
    return {"pixman",
            {frame, texture},
            [quad = prepared(textured, frame, sampling)](const FrameSet& f) {
                const Image to = image_of(*f[0], PIXMAN_a8r8g8b8), from = image_of(*f[1], PIXMAN_a8r8g8b8);
                quad->region.clip(to.get());
                quad->sampler.set(from.get());
                pixman_image_composite32(PIXMAN_OP_SRC, from.get(), nullptr, to.get(), 0, 0, 0, 0, 0, 0, f[0]->width,
                                         f[0]->height);
            },
            Picture::kSame};
}

Peer pixman_tint(FrameShape frame, FrameShape texture, const TexturedQuad& textured, uint32_t color) {
    return {"pixman",
            {frame, texture},
            [quad = prepared(textured, frame, Sampling::kBilinear), color](const FrameSet& f) {
                const Image to = image_of(*f[0], PIXMAN_x8r8g8b8), mask = image_of(*f[1], PIXMAN_a8);
                const Image paint = solid(color);
                quad->region.clip(to.get());
                quad->sampler.set(mask.get());
                pixman_image_composite32(PIXMAN_OP_OVER, paint.get(), mask.get(), to.get(), 0, 0, 0, 0, 0, 0,
                                         f[0]->width, f[0]->height);
            },
            Picture::kSame};
}

}  // namespace zepbmp::bench
