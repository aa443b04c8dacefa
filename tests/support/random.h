/// \file
/// Repeatable random input that reaches the edges.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

namespace zepbmp::test {

/// A small generator of its own, so that a seed means the same on every system.
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed), seed_(seed) {}

    uint64_t next();
    /// 0 .. n-1
    uint32_t below(uint32_t n) { return static_cast<uint32_t>((next() >> 32) * n >> 32); }
    /// low .. high
    int between(int low, int high) { return low + static_cast<int>(below(static_cast<uint32_t>(high - low + 1))); }
    bool chance(int percent) { return below(100) < static_cast<uint32_t>(percent); }

    template <class T>
    T pick(std::initializer_list<T> values) {
        return values.begin()[below(static_cast<uint32_t>(values.size()))];
    }

    uint64_t seed() const { return seed_; }

private:
    uint64_t state_;
    uint64_t seed_;
};

/// Noise only.
void fill_noise(Random& random, std::span<uint8_t> bytes);

/// Runs of noise and of the bytes at which arithmetic turns: 0 1 127 128 254 255.
void fill_pixels(Random& random, std::span<uint8_t> bytes);

/// 16-bit weights, at any address: ordinary ones, and those at which scale, sign or width end.
void fill_weights(Random& random, std::span<uint8_t> bytes);

/// 8-bit masks: half of them 0..128, the others any byte.
void fill_masks(Random& random, std::span<uint8_t> bytes);

/// A float that a caller may mean: whole, in 64ths, or any, up to about `range` and a little below 0.
float ordinary_float(Random& random, float range);

/// The same, and now and then one that no caller means: huge, tiny, infinite, not a number.
float hostile_float(Random& random, float range);

/// How often a random test goes round: `moderate` times, scaled by ZEPBMP_TEST_ROUNDS, of which 16 is the usual.
int rounds(int moderate);

/// The seed of a round of the running test. It depends on the test's name alone, or on ZEPBMP_TEST_SEED.
uint64_t round_seed(int round);

/// What a failing round prints.
std::string how_to_repeat(const Random& random);

}  // namespace zepbmp::test
