#pragma once

#include <cstddef>
#include <vector>

namespace zepbmp::transition {

/// Samples of all channels, planar; silence to begin with.
class SoundBuffer {
public:
    SoundBuffer(int channels, int count) : samples_(static_cast<size_t>(channels) * count), channels_(channels) {
        for (int c = 0; c < channels; ++c)
            channels_[c] = samples_.data() + static_cast<size_t>(c) * count;
    }
    SoundBuffer(const SoundBuffer&) = delete;
    SoundBuffer& operator=(const SoundBuffer&) = delete;

    float* const* channels() const { return channels_.data(); }

private:
    std::vector<float> samples_;
    std::vector<float*> channels_;
};

}  // namespace zepbmp::transition
