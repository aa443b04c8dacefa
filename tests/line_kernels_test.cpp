/// \file
/// Fill, copy, interpolation and combination of lines: every kernel set and both kinds of stores, against loops written out here.
#include <gtest/gtest.h>

#include "core/kernel_tables.h"
#include "core/line_kernels.h"
#include "support/cpu_state.h"
#include "support/kernel_planes.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

class LineKernelsTest : public testing::TestWithParam<std::tuple<Tables, StoreKind>> {
protected:
    void SetUp() override {
        const std::string reason = why_not(tables());
        if (!reason.empty())
            GTEST_SKIP() << reason;
    }
    const Tables& tables() const { return std::get<0>(GetParam()); }
    StoreKind store() const { return std::get<1>(GetParam()); }

    /// One line at some place: flush against a fence, or at any address.
    void lay_out(Random& random, KernelPlane& plane, int bytes) {
        plane.lay_out(static_cast<size_t>(bytes), 1, 0, random.chance(60),
                      random.chance(40) ? kFlush : random.between(0, 15));
        plane.fill(random, fill_pixels);
    }

    template <class Check>
    void for_many_lengths(Check check) {
        const UseTables use(tables());
        int call = 0;
        for (int round = 0; round < rounds(8); ++round) {
            for (int bytes = 0; bytes <= 300; ++bytes) {
                Random random(round_seed(call++));
                check(random, bytes == 300 ? random.between(300, 5000) : bytes);
                if (HasFatalFailure())
                    return;
            }
        }
    }

    std::string context(const Random& random, int bytes) const {
        return std::to_string(bytes) + " bytes" + how_to_repeat(random);
    }

    KernelPlane a_, b_, c_, d_;
};

// What callers fill with: one byte anywhere, whole 16-bit words at even addresses.
TEST_P(LineKernelsTest, Fill) {
    for_many_lengths([&](Random& random, int bytes) {
        const bool words = bytes % 2 == 0 && random.chance(70);
        a_.lay_out(static_cast<size_t>(bytes), 1, 0, random.chance(60),
                   words               ? 2 * random.between(0, 7)
                   : random.chance(40) ? kFlush
                                       : random.between(0, 15));
        a_.fill(random, fill_pixels);
        const uint32_t value = words ? random.below(65536) * 0x10001u : random.below(256) * 0x1010101u;
        call_checked(line_kernels.fill[store()], a_.first(), static_cast<size_t>(bytes), value);
        line_kernels.end_stream();
        std::vector<uint8_t> want = a_.before();
        for (int i = 0; i < bytes; ++i)
            a_.line_in(want, 0)[i] = static_cast<uint8_t>(value >> 8 * (i % 4));
        ASSERT_EQ(a_.difference(want), "") << context(random, bytes);
    });
}

TEST_P(LineKernelsTest, Copy) {
    for_many_lengths([&](Random& random, int bytes) {
        lay_out(random, a_, bytes);
        lay_out(random, b_, bytes);
        const bool same = random.chance(10);
        const KernelPlane& source = same ? a_ : b_;
        call_checked(line_kernels.copy[store()], a_.first(), source.first(), static_cast<size_t>(bytes));
        line_kernels.end_stream();
        std::vector<uint8_t> want = a_.before();
        if (bytes)
            std::memcpy(a_.line_in(want, 0), source.line_before(0), static_cast<size_t>(bytes));
        ASSERT_EQ(a_.difference(want), "") << context(random, bytes);
        ASSERT_EQ(b_.difference(b_.before()), "") << context(random, bytes);
    });
}

TEST_P(LineKernelsTest, Interpolate) {
    for_many_lengths([&](Random& random, int bytes) {
        for (KernelPlane* plane : {&a_, &b_, &c_, &d_})
            lay_out(random, *plane, bytes);
        const bool in_place = random.chance(40);  // the line below is where it belongs already
        const KernelPlane &between = a_, &copied = in_place ? d_ : b_, &above = c_, &below = d_;
        call_checked(line_kernels.interpolate[store()], between.first(), copied.first(), above.first(), below.first(),
                     static_cast<size_t>(bytes));
        line_kernels.end_stream();
        std::vector<uint8_t> want_between = between.before(), want_copied = copied.before();
        for (int i = 0; i < bytes; ++i) {
            between.line_in(want_between, 0)[i] =
                static_cast<uint8_t>((above.line_before(0)[i] + below.line_before(0)[i] + 1) >> 1);
            copied.line_in(want_copied, 0)[i] = below.line_before(0)[i];
        }
        ASSERT_EQ(between.difference(want_between), "") << context(random, bytes);
        ASSERT_EQ(copied.difference(want_copied), "") << context(random, bytes);
        ASSERT_EQ(above.difference(above.before()), "") << context(random, bytes);
        if (!in_place) {
            ASSERT_EQ(below.difference(below.before()), "") << context(random, bytes);
        }
    });
}

TEST_P(LineKernelsTest, Combine) {
    for_many_lengths([&](Random& random, int bytes) {
        lay_out(random, a_, bytes);
        const auto keep = static_cast<uint8_t>(random.pick({0, 255, random.between(0, 255)})),
                   flip = static_cast<uint8_t>(random.pick({0, 255, random.between(0, 255)}));
        call_checked(line_kernels.combine, a_.first(), static_cast<size_t>(bytes), keep, flip);
        std::vector<uint8_t> want = a_.before();
        for (int i = 0; i < bytes; ++i) {
            uint8_t& byte = a_.line_in(want, 0)[i];
            byte = static_cast<uint8_t>((byte & keep) ^ flip);
        }
        ASSERT_EQ(a_.difference(want), "") << context(random, bytes) << " keep " << +keep << " flip " << +flip;
    });
}

// A hint reads nothing, so that memory that does not exist is no error.
TEST_P(LineKernelsTest, PrefetchTouchesNothing) {
    for_many_lengths([&](Random& random, int bytes) {
        lay_out(random, a_, bytes);
        const int pitch = random.pick({-4096, 0, 16, 1 << 20}), lines = random.between(0, 20);
        call_checked(line_kernels.prefetch, a_.first(), static_cast<size_t>(bytes), ptrdiff_t{pitch}, lines);
        ASSERT_EQ(a_.difference(a_.before()), "") << context(random, bytes);
        call_checked(line_kernels.prefetch, static_cast<const uint8_t*>(nullptr), static_cast<size_t>(bytes),
                     ptrdiff_t{pitch}, lines);
    });
}

// Every pair of bytes there is.
TEST_P(LineKernelsTest, InterpolateRoundsHalvesUp) {
    const UseTables use(tables());
    uint8_t above[256], below[256], between[256], copied[256];
    for (int a = 0; a < 256; ++a) {
        std::memset(above, a, sizeof above);
        for (int b = 0; b < 256; ++b)
            below[b] = static_cast<uint8_t>(b);
        line_kernels.interpolate[store()](between, copied, above, below, 256);
        line_kernels.end_stream();
        for (int b = 0; b < 256; ++b) {
            ASSERT_EQ(between[b], (a + b) / 2 + (a + b) % 2) << a << " " << b;
            ASSERT_EQ(copied[b], b);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, LineKernelsTest,
                         testing::Combine(testing::ValuesIn(all_tables()),
                                          testing::Values(kStoreCached, kStoreStreamed)),
                         [](const auto& info) {
                             return tables_name({std::get<0>(info.param), 0}) +
                                    (std::get<1>(info.param) == kStoreStreamed ? "_streamed" : "_cached");
                         });

}  // namespace
}  // namespace zepbmp::test
