/// \file
/// Included once with the checks and once without them.
#pragma once

#include "compose.h"
#include "zepbmp.hpp"

namespace {

void measure(benchmark::State& state) {
    using zepbmp::Format;
    const zepbmp::Bitmap src1(kSide, kSide, Format::yuy2), src2(kSide, kSide, Format::yuy2),
        mask(kSide, kSide, Format::pwrw);
    zepbmp::Bitmap dest(kSide, kSide, Format::yuy2);
    for (auto _ : state)
        zepbmp::compose(dest, src1, src2, mask);
}

}  // namespace
