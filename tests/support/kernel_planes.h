/// \file
/// Lines of memory as a kernel is given them: a first pixel, a signed step, fences and canaries around.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "fence.h"
#include "frame.h"
#include "random.h"

namespace zepbmp::test {

class KernelPlane {
public:
    KernelPlane() : pages_(1 << 15) {}

    /// `step`: bytes from one line's first byte to the next one's; 0 and negative ones too.
    void lay_out(size_t line_bytes, int lines, ptrdiff_t step, bool at_end, int skew) {
        line_bytes_ = line_bytes;
        step_ = step;
        const ptrdiff_t reach = lines > 0 ? (lines - 1) * step : 0;
        const size_t extent =
            line_bytes == 0 || lines == 0 ? 0 : line_bytes + static_cast<size_t>(reach < 0 ? -reach : reach);
        uint8_t* const low = place(pages_, extent, at_end, skew);
        first_ = extent && reach < 0 ? low - reach : low;
        bytes_ = around(pages_, low, extent);
    }

    template <class Fill>
    void fill(Random& random, Fill fill_bytes) {
        fill_bytes(random, bytes_);
        before_.assign(bytes_.begin(), bytes_.end());
    }

    uint8_t* first() const { return first_; }
    ptrdiff_t skip() const { return step_ - static_cast<ptrdiff_t>(line_bytes_); }
    ptrdiff_t step() const { return step_; }

    /// A line as it was when the plane was filled.
    const uint8_t* line_before(int y) const { return before_.data() + (first_ + y * step_ - bytes_.data()); }

    /// All bytes as they were: a model writes its lines into a copy of them.
    const std::vector<uint8_t>& before() const { return before_; }
    uint8_t* line_in(std::vector<uint8_t>& copy, int y) const {
        return copy.data() + (first_ + y * step_ - bytes_.data());
    }

    std::string difference(const std::vector<uint8_t>& want) const {
        if (std::memcmp(bytes_.data(), want.data(), want.size()) == 0)
            return "";
        return first_difference(bytes_, want) + ", counted from " + std::to_string(first_ - bytes_.data()) +
               " before the first pixel";
    }

private:
    FencedPages pages_;
    size_t line_bytes_ = 0;
    ptrdiff_t step_ = 0;
    uint8_t* first_ = nullptr;
    std::span<uint8_t> bytes_;
    std::vector<uint8_t> before_;
};

}  // namespace zepbmp::test
