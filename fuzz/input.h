/// \file
/// A fuzzer's input, from front to back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zepbmp::fuzz {

/// Behind the end there are zeros.
class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), left_(size) {}

    bool empty() const { return left_ == 0; }
    uint32_t take(int bytes) {
        uint32_t value = 0;
        for (int i = 0; i < bytes && left_ > 0; ++i, ++data_, --left_)
            value |= static_cast<uint32_t>(*data_) << 8 * i;
        return value;
    }
    /// Signed, in 64ths.
    float fixed() { return static_cast<float>(static_cast<int16_t>(take(2))) / 64; }
    float bits() {
        const uint32_t word = take(4);
        float value;
        std::memcpy(&value, &word, sizeof value);
        return value;
    }

private:
    const uint8_t* data_;
    size_t left_;
};

}  // namespace zepbmp::fuzz
