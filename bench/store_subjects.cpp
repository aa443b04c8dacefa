#include "peers.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

constexpr int32_t kWidth = 1024;

struct Operation {
    const char* name;
    std::vector<int32_t> formats;  ///< of the frames, the written one first
    double bytes_per_pixel;
    Call call;
    std::function<void(const FrameSet&, int)> model;
};

std::vector<Operation> operations() {
    return {
        {"clear",
         {BMP_FMT_RGBQ},
         4,
         [](const FrameSet& f) { bmp_clear(f[0], 0); },
         [](const FrameSet& f, int) { model::bmp_clear(f[0], 0); }},
        {"copy",
         {BMP_FMT_RGBQ, BMP_FMT_RGBQ},
         8,
         [](const FrameSet& f) { bmp_copy(f[0], f[1], 0); },
         [](const FrameSet& f, int) { model::bmp_copy(f[0], f[1], 0); }},
        {"compose",
         {BMP_FMT_RGBQ, BMP_FMT_RGBQ, BMP_FMT_RGBQ, BMP_FMT_PWRW},
         14,
         [](const FrameSet& f) { bmp_compose(f[0], f[1], f[2], f[3], 0); },
         [](const FrameSet& f, int level) { model::bmp_compose(f[0], f[1], f[2], f[3], 0, level); }},
    };
}

Subject with_stores(const Operation& operation, int32_t footprint_kb, bool repeated) {
    const auto height = static_cast<int32_t>(footprint_kb * 1024 / (operation.bytes_per_pixel * kWidth));
    const double pixels = static_cast<double>(kWidth) * height, bytes = pixels * operation.bytes_per_pixel;
    std::vector<FrameShape> frames;
    for (const int32_t format : operation.formats)
        frames.push_back({format, kWidth, height});
    return {
        .name = std::string("stores_") + operation.name + (repeated ? "_repeated/" : "_ring/") +
                std::to_string(footprint_kb) + "KB",
        .pixels = pixels,
        .bytes = bytes,
        .cached = repeated,
        .frames = frames,
        .call = operation.call,
        .model = operation.model,
        .yardstick = operation.formats.size() == 1 ? memset_of(bytes) : memcpy_of(bytes),
        .peers = {},
        .target = {},
        .compares_stores = true,
    };
}

}  // namespace

std::vector<Subject> store_subjects() {
    constexpr int32_t kLeastKb = 256, kMostKb = 64 * 1024;
    std::vector<Subject> subjects;
    for (const Operation& operation : operations()) {
        for (const bool repeated : {false, true}) {
            for (int32_t kb = kLeastKb; kb <= kMostKb; kb *= 2)
                subjects.push_back(with_stores(operation, kb, repeated));
        }
    }
    return subjects;
}

}  // namespace zepbmp::bench
