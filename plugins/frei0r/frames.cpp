#include "frames.h"

#include <cstring>
#include <functional>

namespace zepbmp::frei0r {

namespace {

constexpr uintptr_t kAlignment = 16;  // bytes; of a bitmap's lines
constexpr int kPixelBytes = 4;

}  // namespace

Frames::Frames(int width, int height, int inputs)
    : width_(width), height_(height), inputs_(inputs), output_copy_(make_bitmap(width, height, BMP_FMT_RGBQ)) {
    for (int i = 0; i < inputs; ++i)
        input_copies_[i] = make_bitmap(width, height, BMP_FMT_RGBQ);
}

bool Frames::ready() const {
    for (int i = 0; i < inputs_; ++i) {
        if (!input_copies_[i])
            return false;
    }
    return output_copy_ != nullptr;
}

bool Frames::lies_as_a_bitmap(const uint32_t* frame) const {
    return reinterpret_cast<uintptr_t>(frame) % kAlignment == 0 && output_copy_->pitch == kPixelBytes * width_;
}

Bitmap Frames::over(uint32_t* frame) const {
    Bitmap bitmap = *output_copy_;
    bitmap.pixels = reinterpret_cast<uint8_t*>(frame);
    return bitmap;
}

Bitmap Frames::input(int index, const uint32_t* frame, const uint32_t* out_frame) {
    const size_t pixels = static_cast<size_t>(width_) * static_cast<size_t>(height_);
    const std::less<const uint32_t*> before;
    const bool apart = !before(frame, out_frame + pixels) || !before(out_frame, frame + pixels);
    if (apart && lies_as_a_bitmap(frame))
        return over(const_cast<uint32_t*>(frame));  // an effect does not write to its inputs
    const Bitmap& copy = *input_copies_[index];
    for (int y = 0; y < height_; ++y)
        std::memcpy(bmp_pointer(&copy, 0, y), frame + static_cast<size_t>(y) * width_, size_t{kPixelBytes} * width_);
    return copy;
}

Bitmap Frames::output(uint32_t* frame) { return lies_as_a_bitmap(frame) ? over(frame) : *output_copy_; }

void Frames::deliver(uint32_t* frame) const {
    if (lies_as_a_bitmap(frame))
        return;
    for (int y = 0; y < height_; ++y)
        std::memcpy(frame + static_cast<size_t>(y) * width_, bmp_pointer(output_copy_.get(), 0, y),
                    size_t{kPixelBytes} * width_);
}

}  // namespace zepbmp::frei0r
