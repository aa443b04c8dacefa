/// \file
/// Bitmaps for fuzzers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tests/support/formats.h"
#include "zepbmp.h"

namespace zepbmp::fuzz {

/// What belongs to an odd width's last pixel of two bytes.
enum class LastPixel { kWithPartner, kAlone };

/// A bitmap whose block ends with its last pixel, so that the address sanitizer sees the first byte too many.
class Picture {
public:
    Picture(int width, int height, int format, uint32_t create_flags = 0, LastPixel last = LastPixel::kWithPartner) {
        const int size = test::bytes_per_pixel(format);
        const int pixels = size == 2 && last == LastPixel::kWithPartner ? (width + 1) & ~1 : width;
        line_bytes_ = static_cast<size_t>(pixels * size);
        record_.width = width;
        record_.height = height;
        record_.bytes_per_pixel = size;
        record_.bit_count = 8 * size;
        record_.pitch = (width * size + 15) & ~15;
        record_.create_flags = create_flags;
        record_.format = static_cast<uint32_t>(format);
        bytes_ = width > 0 && height > 0 ? static_cast<size_t>(height - 1) * pitch() + line_bytes_ : 0;
        block_.reset(static_cast<uint8_t*>(std::malloc(bytes_)));
        if (!block_ && bytes_ > 0)
            std::abort();
        record_.pixels = block_.get();
    }

    Bitmap* bitmap() { return &record_; }
    uint8_t* bytes() const { return block_.get(); }
    size_t size() const { return bytes_; }
    size_t pitch() const { return static_cast<size_t>(record_.pitch); }
    size_t line_bytes() const { return line_bytes_; }
    int height() const { return record_.height; }

    void fill_noise(uint32_t seed) {
        uint64_t state = seed * 0x9e3779b97f4a7c15u + 1;
        for (size_t i = 0; i < bytes_; i += 8) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            std::memcpy(bytes() + i, &state, std::min<size_t>(8, bytes_ - i));
        }
    }
    template <class Value>
    void fill_values(Value value) {
        for (size_t i = 0; i + sizeof value <= bytes_; i += sizeof value)
            std::memcpy(bytes() + i, &value, sizeof value);
    }

    /// Of the same size and format.
    void copy(const Picture& other) {
        if (bytes_ > 0)
            std::memcpy(bytes(), other.bytes(), bytes_);
    }

    bool same(const Picture& other) const { return same_bytes(other, 0, bytes_); }

    bool same_line(const Picture& other, int line) const {
        return bytes_ == 0 || same_bytes(other, static_cast<size_t>(line) * pitch(), line_bytes_);
    }

    /// Behind the last pixels of the lines.
    bool same_padding(const Picture& other) const {
        for (size_t at = line_bytes_; at < bytes_; at += pitch())
            if (!same_bytes(other, at, pitch() - line_bytes_))
                return false;
        return true;
    }

private:
    struct Free {
        void operator()(void* block) const { std::free(block); }
    };

    bool same_bytes(const Picture& other, size_t at, size_t count) const {
        return count == 0 || std::memcmp(bytes() + at, other.bytes() + at, count) == 0;
    }

    Bitmap record_{};
    std::unique_ptr<uint8_t, Free> block_;
    size_t line_bytes_ = 0;
    size_t bytes_ = 0;
};

}  // namespace zepbmp::fuzz
