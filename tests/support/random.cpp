#include "random.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace zepbmp::test {
namespace {

constexpr int kUsualRounds = 16;

const char* environment(const char* name) { return std::getenv(name); }

void put_word(std::span<uint8_t> bytes, size_t at, uint32_t word) {
    bytes[at] = static_cast<uint8_t>(word);
    if (at + 1 < bytes.size())
        bytes[at + 1] = static_cast<uint8_t>(word >> 8);
}

uint32_t nasty_weight(Random& random) {
    return random.pick<uint32_t>(
        {0, 1, 2047, 2048, 2049, 4095, 4096, 4097, 8191, 8192, 12288, 16383, 16384, 32767, 32768, 61440, 65535});
}

}  // namespace

uint64_t Random::next() {
    state_ += 0x9e3779b97f4a7c15;
    uint64_t z = state_;
    z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9;
    z = (z ^ z >> 27) * 0x94d049bb133111eb;
    return z ^ z >> 31;
}

void fill_noise(Random& random, std::span<uint8_t> bytes) {
    size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        const uint64_t word = random.next();
        std::memcpy(bytes.data() + i, &word, sizeof word);
    }
    for (uint64_t word = random.next(); i < bytes.size(); ++i, word >>= 8)
        bytes[i] = static_cast<uint8_t>(word);
}

void fill_pixels(Random& random, std::span<uint8_t> bytes) {
    for (size_t i = 0; i < bytes.size();) {
        const size_t run = std::min<size_t>(1 + random.below(24), bytes.size() - i);
        if (random.chance(50))
            fill_noise(random, bytes.subspan(i, run));
        else
            std::memset(bytes.data() + i, random.pick({0, 1, 127, 128, 254, 255}), run);
        i += run;
    }
}

void fill_weights(Random& random, std::span<uint8_t> bytes) {
    for (size_t i = 0; i < bytes.size();) {
        const size_t end = std::min<size_t>(i + 2 * (1 + random.below(12)), bytes.size());
        const uint32_t kind = random.below(4), constant = nasty_weight(random);
        for (; i < end; i += 2)
            put_word(bytes, i,
                     kind == 0   ? constant
                     : kind == 1 ? nasty_weight(random)
                     : kind == 2 ? random.below(65536)
                                 : random.below(4097));
    }
}

void fill_masks(Random& random, std::span<uint8_t> bytes) {
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(random.chance(50)   ? random.below(129)
                                    : random.chance(50) ? random.below(256)
                                                        : random.pick<uint32_t>({0, 1, 64, 127, 128, 129, 254, 255}));
}

float ordinary_float(Random& random, float range) {
    const int whole = random.between(-static_cast<int>(range) / 4 - 2, static_cast<int>(range) + 2);
    switch (random.below(4)) {
        case 0: return static_cast<float>(whole);
        case 1: return static_cast<float>(whole) + 0.5f;
        case 2: return static_cast<float>(whole * 64 + random.between(0, 63)) / 64;
        default: return static_cast<float>(whole) + static_cast<float>(random.below(1 << 20)) / (1 << 20);
    }
}

float hostile_float(Random& random, float range) {
    using Limits = std::numeric_limits<float>;
    if (random.chance(80))
        return ordinary_float(random, range);
    return random.pick({0.0f,
                        -0.0f,
                        -1.0f,
                        1e-30f,
                        -1e-30f,
                        1e9f,
                        -1e9f,
                        3.3e7f,
                        -3.3e7f,
                        2147483648.0f,
                        4e9f,
                        1e30f,
                        -1e30f,
                        Limits::max(),
                        -Limits::max(),
                        Limits::denorm_min(),
                        Limits::min() / 3,
                        Limits::infinity(),
                        -Limits::infinity(),
                        Limits::quiet_NaN()});
}

int rounds(int moderate) {
    const char* const text = environment("ZEPBMP_TEST_ROUNDS");
    const int scale = text ? std::atoi(text) : kUsualRounds;
    return std::max(1, moderate * scale / kUsualRounds);
}

uint64_t round_seed(int round) {
    if (const char* const text = environment("ZEPBMP_TEST_SEED"))
        return std::strtoull(text, nullptr, 0) + static_cast<uint64_t>(round);
    uint64_t hash = 0xcbf29ce484222325;
    const auto add = [&](const char* text) {
        for (; text && *text; ++text)
            hash = (hash ^ static_cast<uint8_t>(*text)) * 0x100000001b3;
    };
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    add(test->test_suite_name());
    add(test->name());
    return hash + static_cast<uint64_t>(round) * 0x1000193;
}

std::string how_to_repeat(const Random& random) {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    return "\nto repeat: ZEPBMP_TEST_SEED=" + std::to_string(random.seed()) +
           " ZEPBMP_TEST_ROUNDS=1 <program> --gtest_filter=" + test->test_suite_name() + "." + test->name();
}

}  // namespace zepbmp::test
