/// \file
/// The plug-in files as hosts use them: what they tell, what they take, and what they draw, against frames drawn apart.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

#include "expected.h"
#include "loaded_plugin.h"
#include "tests/support/fence.h"
#include "tests/support/random.h"

// Sanitizers have a malloc of their own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define COUNTS_ALLOCATIONS 1

// The test program's allocations and those of the plug-ins, which look here first.
extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void __libc_free(void*);
namespace {
thread_local int allocations;
thread_local int blocks;        // that are not freed yet
thread_local int fail_at = -1;  // so many allocations still succeed, the next one gets no memory, all others do again
bool is_short() {
    ++allocations;
    return fail_at >= 0 && fail_at-- == 0;
}
void* counted(void* block) {
    blocks += block != nullptr;
    return block;
}
}  // namespace
extern "C" void* malloc(size_t bytes) { return is_short() ? nullptr : counted(__libc_malloc(bytes)); }
extern "C" void* calloc(size_t count, size_t bytes) {
    return is_short() ? nullptr : counted(__libc_calloc(count, bytes));
}
extern "C" void free(void* block) {
    blocks -= block != nullptr;
    __libc_free(block);
}
#endif

namespace zepbmp::test {
namespace {

const char* const kEffects[] = {"corner_pin", "dissolve", "fly", "interpolate", "spotlight", "wipe"};

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Size {
    int width;
    int height;
    size_t pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
};

constexpr Size kSizes[] = {{1, 1},   {1, 8},   {8, 1},   {2, 2},   {3, 5},    {7, 9},     {8, 8},     {15, 16},
                           {16, 15}, {17, 33}, {64, 48}, {90, 50}, {36, 200}, {320, 240}, {32768, 8}, {8, 32768}};

/// Noise, in part over a smooth ground, whose alpha is opaque in the upper half.
Pixels make_picture(Random& random, Size size) {
    Pixels pixels(size.pixels());
    for (size_t i = 0; i < pixels.size(); ++i) {
        const uint32_t noise = static_cast<uint32_t>(random.next() >> 32);
        pixels[i] = i % 7 < 3 ? noise : static_cast<uint32_t>(i * 0x010203) ^ 0x40302010;
        if (i < pixels.size() / 2)
            pixels[i] |= 0xff000000;
    }
    return pixels;
}

double any_part(Random& random) {
    switch (random.below(5)) {
        case 0: return random.pick({0.0, 1.0, 0.5, 0.25});
        case 1: return random.below(1 << 12) / 4096.0;
        default: return random.below(1u << 30) / static_cast<double>(1u << 30);
    }
}

/// From a hard edge to one of the shorter side's width, with what is near one and two pixels among them.
double any_feather(Random& random, Size size) {
    if (random.chance(40))
        return std::min(1.0,
                        random.pick({0.0, 0.3, 0.999, 1.0, 1.001, 1.999, 2.0}) / std::min(size.width, size.height));
    return any_part(random);
}

Place any_place(Random& random) {
    const auto coordinate = [&] { return random.chance(70) ? any_part(random) : 3 * any_part(random) - 1; };
    const double x = coordinate();
    return {x, coordinate()};
}

Rgb any_color(Random& random) {
    const auto part = [&] { return static_cast<float>(any_part(random)); };
    const float red = part(), green = part();
    return {red, green, part()};
}

void set_place(Instance& instance, Random& random, const std::string& name, const Place& place) {
    // By the position, or by the numbers; what is left alone stays at its initial value.
    if (random.chance(50)) {
        instance.set(name, place.x, place.y);
    } else {
        instance.set(name + " across", place.x);
        instance.set(name + " down", place.y);
    }
}

/// Gives the instance random values, and returns the frame that it then has to draw.
Pixels set_and_expect(Instance& instance, const std::string& effect, Random& random, Size size, const Pixels& first,
                      const Pixels& second) {
    const double progress = random.chance(90) ? 0.02 + 0.96 * any_part(random) : any_part(random);
    if (effect == "dissolve" || effect == "fly") {
        instance.set("Progress", progress);
        return (effect == "fly" ? expected_fly : expected_dissolve)(size.width, size.height, first, second, progress);
    }
    if (effect == "interpolate") {
        const bool lower = random.chance(50);
        instance.set("Lower field", lower ? 1 : 0);
        return expected_interpolation(size.width, size.height, first, lower);
    }
    if (effect == "spotlight") {
        const Spotlight light = {any_place(random), any_part(random),  any_feather(random, size),
                                 any_part(random),  any_color(random), random.chance(50)};
        set_place(instance, random, "Centre", light.centre);
        instance.set("Radius", light.radius);
        instance.set("Feather", light.feather);
        instance.set("Darkness", light.darkness);
        instance.set("Colour", light.color[0], light.color[1], light.color[2]);
        instance.set("Cosine edge", light.cosine ? 1 : 0);
        return expected_spotlight(size.width, size.height, first, light);
    }
    if (effect == "wipe") {
        Wipe wipe;
        wipe.progress = progress;
        wipe.shape = random.between(0, 3);
        wipe.centre = any_place(random);
        wipe.feather = any_feather(random, size) / 2;
        wipe.cosine = random.chance(50);
        wipe.roundness = any_part(random);
        wipe.band_width = any_part(random);
        wipe.band_color = any_color(random);
        instance.set("Progress", wipe.progress);
        instance.set("Shape", (wipe.shape + random.pick({0.0, 0.5, wipe.shape == 3 ? 1.0 : 0.9999})) / 4);
        set_place(instance, random, "Centre", wipe.centre);
        instance.set("Feather", wipe.feather);
        instance.set("Cosine edge", wipe.cosine ? 1 : 0);
        instance.set("Corner radius", wipe.roundness);
        instance.set("Band width", wipe.band_width);
        instance.set("Band colour", wipe.band_color[0], wipe.band_color[1], wipe.band_color[2]);
        return expected_wipe(size.width, size.height, first, second, wipe);
    }
    CornerPin pin;
    const char* const names[] = {"Top left", "Top right", "Bottom right", "Bottom left"};
    const bool tame = random.chance(60);
    for (size_t i = 0; i < 4; ++i) {
        Place& corner = pin.corners[i];
        const Place home = corner, other = any_place(random);
        corner = tame ? Place{home.x + 0.4 * (other.x - home.x), home.y + 0.4 * (other.y - home.y)} : other;
        corner.x = std::clamp(corner.x, -1.0, 2.0), corner.y = std::clamp(corner.y, -1.0, 2.0);
        set_place(instance, random, names[i], corner);
    }
    pin.transparent = random.chance(50);
    pin.background = any_color(random);
    instance.set("Transparent", pin.transparent ? 1 : 0);
    instance.set("Background", pin.background[0], pin.background[1], pin.background[2]);
    return expected_corner_pin(size.width, size.height, first, pin);
}

/// The first pixel that differs.
std::string difference(Size size, const uint32_t* got, const Pixels& want) {
    for (size_t i = 0; i < want.size(); ++i) {
        if (got[i] != want[i]) {
            char text[100];
            std::snprintf(text, sizeof text, "%dx%d: pixel (%zu, %zu) is %08x instead of %08x", size.width, size.height,
                          i % size.width, i / size.width, got[i], want[i]);
            return text;
        }
    }
    return "";
}

class Frei0r : public testing::TestWithParam<const char*> {
protected:
    std::string effect() const { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(All, Frei0r, testing::ValuesIn(kEffects), [](const auto& info) { return info.param; });

TEST_P(Frei0r, TellsWhatItIs) {
    const LoadedPlugin plugin(effect());
    std::string name = "zepbmp " + effect();
    std::replace(name.begin(), name.end(), '_', ' ');
    EXPECT_EQ(plugin.info.name, name);
    EXPECT_EQ(plugin.info.frei0r_version, FREI0R_MAJOR_VERSION);
    EXPECT_EQ(plugin.info.color_model, F0R_COLOR_MODEL_RGBA8888);
    EXPECT_STRNE(plugin.info.author, "");
    EXPECT_STRNE(plugin.info.explanation, "");
    const bool mixer = effect() == "wipe" || effect() == "fly" || effect() == "dissolve";
    EXPECT_EQ(plugin.info.plugin_type, mixer ? F0R_PLUGIN_TYPE_MIXER2 : F0R_PLUGIN_TYPE_FILTER);
    ASSERT_GT(plugin.parameters.size(), 0u);
    for (const ParameterInfo& parameter : plugin.parameters) {
        EXPECT_NE(parameter.name, "");
        EXPECT_NE(parameter.explanation, "");
        // Hosts make property names of it.
        EXPECT_EQ(parameter.name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz "),
                  std::string::npos)
            << parameter.name;
    }
}

TEST_P(Frei0r, BeginsAndEndsAsOftenAsAHostLikes) {
    const LoadedPlugin one(effect()), other(effect());
    EXPECT_EQ(one.init(), 1);
    one.deinit();
    one.deinit();
    const Instance instance(other, 8, 8);  // is not hurt by it
    Pixels in(64, 0xff102030), out(64);
    instance.update(in.data(), in.data(), out.data());
    EXPECT_NE(out, Pixels(64));
}

TEST_P(Frei0r, GivesBackWhatItWasGiven) {
    const LoadedPlugin plugin(effect());
    const Instance instance(plugin, 16, 8);
    for (int i = 0; i < plugin.info.num_params; ++i) {
        switch (plugin.parameters[static_cast<size_t>(i)].type) {
            case F0R_PARAM_DOUBLE: {
                double given = 0.3125, got = -9;
                plugin.set(instance.get(), &given, i);
                plugin.get(instance.get(), &got, i);
                EXPECT_EQ(got, given);
                break;
            }
            case F0R_PARAM_BOOL: {
                for (double given : {1.0, 0.0, 1.0}) {
                    double got = -9;
                    plugin.set(instance.get(), &given, i);
                    plugin.get(instance.get(), &got, i);
                    EXPECT_EQ(got, given);
                }
                break;
            }
            case F0R_PARAM_COLOR: {
                f0r_param_color_t given = {0.25f, 0.5f, 0.125f}, got = {};
                plugin.set(instance.get(), &given, i);
                plugin.get(instance.get(), &got, i);
                EXPECT_EQ(std::memcmp(&got, &given, sizeof got), 0);
                break;
            }
            case F0R_PARAM_POSITION: {
                f0r_param_position_t given = {0.375, -0.5}, got = {};
                plugin.set(instance.get(), &given, i);
                plugin.get(instance.get(), &got, i);
                EXPECT_EQ(std::memcmp(&got, &given, sizeof got), 0);
                break;
            }
            default: FAIL() << "type " << plugin.parameters[static_cast<size_t>(i)].type;
        }
    }
}

TEST_P(Frei0r, HoldsValuesToTheirRanges) {
    const LoadedPlugin plugin(effect());
    const Instance instance(plugin, 16, 8);
    for (int i = 0; i < plugin.info.num_params; ++i) {
        const ParameterInfo& parameter = plugin.parameters[static_cast<size_t>(i)];
        union {
            double number;
            f0r_param_color_t color;
            f0r_param_position_t position;
        } before{}, after{};
        plugin.get(instance.get(), &before, i);
        if (parameter.type == F0R_PARAM_COLOR) {
            const float nan = static_cast<float>(kNan), infinity = static_cast<float>(kInfinity);
            for (f0r_param_color_t color :
                 {f0r_param_color_t{nan, 0, 0}, f0r_param_color_t{0, nan, 0}, f0r_param_color_t{0, 0, nan}}) {
                plugin.set(instance.get(), &color, i);
                plugin.get(instance.get(), &after, i);
                EXPECT_EQ(std::memcmp(&after.color, &before.color, sizeof after.color), 0);
            }
            f0r_param_color_t color = {-infinity, infinity, 7};
            plugin.set(instance.get(), &color, i);
            plugin.get(instance.get(), &color, i);
            EXPECT_EQ(color.r, 0);
            EXPECT_EQ(color.g, 1);
            EXPECT_EQ(color.b, 1);
        } else if (parameter.type == F0R_PARAM_POSITION) {
            for (f0r_param_position_t position : {f0r_param_position_t{kNan, 0}, f0r_param_position_t{0, kNan}}) {
                plugin.set(instance.get(), &position, i);
                plugin.get(instance.get(), &after, i);
                EXPECT_EQ(std::memcmp(&after.position, &before.position, sizeof after.position), 0);
            }
            f0r_param_position_t position = {-kInfinity, 1e300};
            plugin.set(instance.get(), &position, i);
            plugin.get(instance.get(), &position, i);
            EXPECT_EQ(position.x, -1);
            EXPECT_EQ(position.y, 2);
        } else {
            double number = kNan;
            plugin.set(instance.get(), &number, i);
            plugin.get(instance.get(), &after, i);
            EXPECT_EQ(after.number, before.number) << parameter.name;
            const bool coordinate = parameter.name.ends_with(" across") || parameter.name.ends_with(" down");
            for (double given : {-kInfinity, -1e300, kInfinity, 1e300}) {
                plugin.set(instance.get(), &given, i);
                plugin.get(instance.get(), &number, i);
                EXPECT_EQ(number, given < 0 ? (coordinate ? -1 : 0) : (coordinate ? 2 : 1)) << parameter.name;
            }
        }
    }
}

TEST_P(Frei0r, IgnoresWhatIsNotThere) {
    const LoadedPlugin plugin(effect());
    const Instance instance(plugin, 8, 8);
    double value[8] = {};
    for (int index :
         {-1, std::numeric_limits<int>::min(), plugin.info.num_params, 1000, std::numeric_limits<int>::max()}) {
        plugin.set(instance.get(), value, index);
        value[0] = 77;
        plugin.get(instance.get(), value, index);
        EXPECT_EQ(value[0], 77);
        f0r_param_info_t info = {"kept", 99, nullptr};
        plugin.get_param_info(&info, index);
        EXPECT_STREQ(info.name, "kept");
    }
    for (int i = 0; i < plugin.info.num_params; ++i) {
        plugin.set(instance.get(), nullptr, i);
        plugin.get(instance.get(), nullptr, i);
        plugin.set(nullptr, value, i);
        plugin.get(nullptr, value, i);
    }
    Pixels in(64, 0xff102030), out(64, 7);
    plugin.update2(nullptr, 0, in.data(), in.data(), nullptr, out.data());
    plugin.update2(instance.get(), 0, nullptr, in.data(), nullptr, out.data());
    plugin.update2(instance.get(), 0, in.data(), in.data(), nullptr, nullptr);
    if (plugin.is_mixer())
        plugin.update2(instance.get(), 0, in.data(), nullptr, nullptr, out.data());
    EXPECT_EQ(out, Pixels(64, 7));
    plugin.destruct(nullptr);
}

TEST_P(Frei0r, MakesNoInstanceOfNoSize) {
    const LoadedPlugin plugin(effect());
    const unsigned most = std::numeric_limits<unsigned>::max();
    for (const auto& [width, height] : {std::pair(0u, 8u),
                                        {8u, 0u},
                                        {0u, 0u},
                                        {most, 8u},
                                        {8u, most},
                                        {most, most},
                                        {1u << 31, 1u << 31},
                                        {32769u, 1u}})
        EXPECT_EQ(plugin.construct(width, height), nullptr) << width << "x" << height;
}

TEST_P(Frei0r, DrawsWhatTheLibraryDraws) {
    const LoadedPlugin plugin(effect());
    for (const Size size : kSizes) {
        const int kRounds = size.pixels() < 10'000 ? rounds(20) : size.pixels() < 100'000 ? rounds(6) : rounds(1);
        for (int round = 0; round < kRounds; ++round) {
            Random random(round_seed(round) + size.pixels());
            const Pixels first = make_picture(random, size), second = make_picture(random, size);
            Instance instance(plugin, size.width, size.height);
            const Pixels want = set_and_expect(instance, effect(), random, size, first, second);
            Pixels got(size.pixels(), 0xdeadbeef);
            instance.update(first.data(), second.data(), got.data());
            EXPECT_EQ(difference(size, got.data(), want), "") << how_to_repeat(random);
            if (HasFailure())
                return;
        }
    }
}

TEST_P(Frei0r, DrawsLargeFrames) {
    const LoadedPlugin plugin(effect());
    const Size size = {2048, 2048};
    Random random(round_seed(0));
    const Pixels first = make_picture(random, size), second = make_picture(random, size);
    Instance instance(plugin, size.width, size.height);
    const Pixels want = set_and_expect(instance, effect(), random, size, first, second);
    Pixels got(size.pixels());
    instance.update(first.data(), second.data(), got.data());
    EXPECT_EQ(difference(size, got.data(), want), "");
}

// One instance, whose values change from frame to frame and come back.
TEST_P(Frei0r, RemembersNothingButItsParameters) {
    const LoadedPlugin plugin(effect());
    const Size size = {64, 48};
    Random pictures(1);
    const Pixels first = make_picture(pictures, size), second = make_picture(pictures, size);
    Instance instance(plugin, size.width, size.height);
    for (int k = 0; k < 2; ++k) {
        for (int round = 0; round < rounds(20); ++round) {
            Random random(round_seed(round));
            Instance fresh(plugin, size.width, size.height);
            set_and_expect(fresh, effect(), random, size, first, second);
            for (int i = 0; i < plugin.info.num_params; ++i) {
                double value[2];
                plugin.get(fresh.get(), value, i);
                plugin.set(instance.get(), value, i);
            }
            Pixels want(size.pixels()), got(size.pixels());
            fresh.update(first.data(), second.data(), want.data(), round);
            instance.update(first.data(), second.data(), got.data(), k ? -1e300 : kNan);
            ASSERT_EQ(difference(size, got.data(), want), "") << how_to_repeat(random);
        }
    }
}

// Each frame ends at an unreadable page, begins behind one, or lies askew, and what is around it stays.
TEST_P(Frei0r, StaysInsideItsFrames) {
    const LoadedPlugin plugin(effect());
    for (const Size size : {Size{8, 8}, {4, 1}, {16, 9}, {64, 48}, {12, 5}, {1, 1}, {7, 3}, {90, 50}}) {
        const size_t bytes = size.pixels() * 4;
        const FencedPages pages[] = {FencedPages(bytes + 64), FencedPages(bytes + 64), FencedPages(bytes + 64)};
        for (int round = 0; round < rounds(16); ++round) {
            Random random(round_seed(round));
            const Pixels first = make_picture(random, size), second = make_picture(random, size);
            uint8_t* at[3];
            for (int i = 0; i < 3; ++i) {
                const bool at_end = random.chance(60);
                at[i] = place(pages[i], bytes, at_end, random.chance(60) ? kFlush : 4 * random.between(1, 3));
                for (uint8_t& byte : around(pages[i], at[i], bytes))
                    byte = 0xa5;
            }
            std::memcpy(at[0], first.data(), bytes);
            std::memcpy(at[1], second.data(), bytes);
            Instance instance(plugin, size.width, size.height);
            const Pixels want = set_and_expect(instance, effect(), random, size, first, second);
            uint32_t* const out = reinterpret_cast<uint32_t*>(at[2]);
            instance.update(reinterpret_cast<uint32_t*>(at[0]), reinterpret_cast<uint32_t*>(at[1]), out);
            ASSERT_EQ(difference(size, out, want), "") << how_to_repeat(random);
            EXPECT_EQ(std::memcmp(at[0], first.data(), bytes), 0) << "an input has changed";
            EXPECT_EQ(std::memcmp(at[1], second.data(), bytes), 0) << "an input has changed";
            for (int i = 0; i < 3; ++i) {
                for (uint8_t& byte : around(pages[i], at[i], bytes)) {
                    if (&byte < at[i] || &byte >= at[i] + bytes) {
                        ASSERT_EQ(byte, 0xa5) << &byte - at[i] << " of frame " << i << ", " << how_to_repeat(random);
                    }
                }
            }
        }
    }
}

TEST_P(Frei0r, DrawsOverItsOwnInput) {
    const LoadedPlugin plugin(effect());
    for (const Size size : {Size{64, 48}, {7, 9}}) {
        for (int round = 0; round < rounds(8); ++round) {
            Random random(round_seed(round));
            const Pixels first = make_picture(random, size), second = make_picture(random, size);
            Instance instance(plugin, size.width, size.height);
            const Pixels want = set_and_expect(instance, effect(), random, size, first, second);
            Pixels frame = round % 2 && plugin.is_mixer() ? second : first;
            if (round % 2 && plugin.is_mixer())
                instance.update(first.data(), frame.data(), frame.data());
            else
                instance.update(frame.data(), second.data(), frame.data());
            ASSERT_EQ(difference(size, frame.data(), want), "") << how_to_repeat(random);
        }
    }
}

#if COUNTS_ALLOCATIONS
TEST_P(Frei0r, MakesNoInstanceWithoutMemory) {
    const LoadedPlugin plugin(effect());
    for (const Size size : {Size{64, 48}, {7, 9}}) {
        constexpr int kMostAllocations = 100;
        int succeeding = 0;
        for (; succeeding < kMostAllocations; ++succeeding) {
            const int before = blocks;
            fail_at = succeeding;
            const f0r_instance_t instance =
                plugin.construct(static_cast<unsigned>(size.width), static_cast<unsigned>(size.height));
            const bool failed = fail_at < 0;
            fail_at = -1;
            EXPECT_EQ(instance == nullptr, failed) << "after " << succeeding;
            plugin.destruct(instance);
            ASSERT_EQ(blocks, before) << "after " << succeeding;
            if (!failed)
                break;
        }
        EXPECT_GT(succeeding, 2);
        EXPECT_LT(succeeding, kMostAllocations);
    }
}

TEST_P(Frei0r, AllocatesNothingForAFrameUnlessItIsWide) {
    const LoadedPlugin plugin(effect());
    const bool maps = effect() == "fly" || effect() == "corner_pin";
    for (const Size size : {Size{320, 240}, {90, 50}, {2176, 9}, {2600, 9}}) {
        const int most = maps && size.width > 2176 ? 1 : 0;
        for (int round = 0; round < rounds(8); ++round) {
            Random random(round_seed(round));
            const Pixels first = make_picture(random, size), second = make_picture(random, size);
            const int before_construct = allocations;
            Instance instance(plugin, size.width, size.height);
            EXPECT_GT(allocations, before_construct) << "the count counts";
            set_and_expect(instance, effect(), random, size, first, second);
            Pixels out(size.pixels());
            const int before = allocations;
            instance.update(first.data(), second.data(), out.data());
            EXPECT_LE(allocations - before, most) << size.width << " pixels, " << how_to_repeat(random);
        }
    }
}
#endif

// Whatever a host hands over, a frame comes out and nothing else happens.
TEST_P(Frei0r, SurvivesAnyValues) {
    const LoadedPlugin plugin(effect());
    for (const Size size : {Size{64, 48}, {9, 7}, {1, 1}}) {
        Instance instance(plugin, size.width, size.height), busy(plugin, size.width, size.height);
        for (int round = 0; round < rounds(100); ++round) {
            Random random(round_seed(round));
            const auto any = [&] {
                return random.pick({0.0, 1.0, -1.0, 2.0, 0.5, kNan, kInfinity, -kInfinity, 1e-320, 1e308, -1e308, 1e-9,
                                    1 - 1e-9, any_part(random), any_part(random)});
            };
            for (int i = 0; i < plugin.info.num_params; ++i) {
                if (plugin.parameters[static_cast<size_t>(i)].type == F0R_PARAM_COLOR) {
                    f0r_param_color_t color = {static_cast<float>(any()), static_cast<float>(any()),
                                               static_cast<float>(any())};
                    plugin.set(instance.get(), &color, i);
                } else {
                    double value[2] = {any(), any()};
                    plugin.set(instance.get(), value, i);
                }
            }
            // What the other one has in its own memory is of other pictures, drawn with usual values.
            Pixels one(size.pixels(), 1), other(size.pixels(), 2);
            const Pixels third = make_picture(random, size), fourth = make_picture(random, size);
            set_and_expect(busy, effect(), random, size, third, fourth);
            busy.update(third.data(), fourth.data(), other.data());
            for (int i = 0; i < plugin.info.num_params; ++i) {
                double value[2];
                plugin.get(instance.get(), value, i);
                plugin.set(busy.get(), value, i);
            }
            std::fill(other.begin(), other.end(), 2);
            const Pixels first = make_picture(random, size), second = make_picture(random, size);
            instance.update(first.data(), second.data(), one.data(), any());
            busy.update(first.data(), second.data(), other.data(), any());
            ASSERT_EQ(difference(size, one.data(), other), "") << "a pixel was left out; " << how_to_repeat(random);
        }
    }
}

TEST_P(Frei0r, DrawsOnManyThreads) {
    const LoadedPlugin plugin(effect());
    constexpr int kThreads = 8;
    const Size size = {90, 50};
    std::atomic<int> waiting{kThreads}, wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            Random random(static_cast<uint64_t>(i) + 1);
            const Pixels first = make_picture(random, size), second = make_picture(random, size);
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            for (int k = 0; k < 12; ++k) {
                Instance instance(plugin, size.width, size.height);
                const Pixels want = set_and_expect(instance, effect(), random, size, first, second);
                Pixels got(size.pixels());
                instance.update(first.data(), second.data(), got.data());
                wrong += got != want;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

// ---------------------------------------------------------------- what each effect promises

Pixels draw(const Instance& instance, Size size, const Pixels& first, const Pixels& second) {
    Pixels out(size.pixels());
    instance.update(first.data(), second.data(), out.data());
    return out;
}

TEST(Frei0rMixers, BeginWithTheFirstPictureAndEndWithTheSecond) {
    for (const char* const effect : {"wipe", "fly", "dissolve"}) {
        const LoadedPlugin plugin(effect);
        for (const Size size : {Size{64, 48}, {7, 9}}) {
            Random random(1);
            const Pixels first = make_picture(random, size), second = make_picture(random, size);
            Instance instance(plugin, size.width, size.height);
            instance.set("Progress", 0);
            EXPECT_EQ(draw(instance, size, first, second), first) << effect;
            instance.set("Progress", 1);
            EXPECT_EQ(draw(instance, size, first, second), second) << effect;
        }
    }
}

// Of two equal pictures a dissolve makes the same one; a wipe, whose shares are cut, may lose 1 in a byte.
TEST(Frei0rMixers, KeepEqualPictures) {
    const LoadedPlugin dissolve("dissolve"), wipe("wipe");
    const Size size = {64, 48};
    Random random(1);
    const Pixels picture = make_picture(random, size);
    Instance dissolving(dissolve, size.width, size.height), wiping(wipe, size.width, size.height);
    wiping.set("Feather", 1);
    int darker = 0;
    for (int step = 1; step < 64; ++step) {
        dissolving.set("Progress", step / 64.0 + 0.003);
        ASSERT_EQ(difference(size, draw(dissolving, size, picture, picture).data(), picture), "") << step;
        wiping.set("Progress", step / 64.0);
        const Pixels wiped = draw(wiping, size, picture, picture);
        for (size_t i = 0; i < wiped.size(); ++i) {
            ASSERT_EQ(wiped[i] >> 24, picture[i] >> 24);
            for (int k = 0; k < 24; k += 8) {
                const int lost = static_cast<int>(picture[i] >> k & 255) - static_cast<int>(wiped[i] >> k & 255);
                ASSERT_TRUE(lost == 0 || lost == 1) << lost;
                darker += lost;
            }
        }
    }
    EXPECT_GT(darker, 0);
}

// Just before its end a wipe shows nothing of the first picture, just after its beginning nothing of the second: from
// there to the end nothing jumps.
TEST(Frei0rWipe, CoversTheFrameAtItsEnd) {
    const LoadedPlugin plugin("wipe");
    const Size size = {64, 48};
    const Pixels black(size.pixels(), 0xff000000), white(size.pixels(), 0xffffffff);
    for (int shape = 0; shape < 4; ++shape) {
        for (const Place centre : {Place{0.5, 0.5}, {0, 0}, {0.8, 0.3}, {1.5, -0.5}}) {
            for (const double feather : {0.0, 0.1, 0.9}) {
                for (const double roundness : {0.0, 0.3, 1.0}) {
                    Instance instance(plugin, size.width, size.height);
                    instance.set("Shape", shape / 4.0);
                    instance.set("Centre", centre.x, centre.y);
                    instance.set("Feather", feather);
                    instance.set("Corner radius", roundness);
                    instance.set("Progress", 1 - 1e-7);
                    const Pixels end = draw(instance, size, black, white);
                    const uint32_t darkest = *std::min_element(end.begin(), end.end()) & 255;
                    EXPECT_GE(darkest, 253u) << shape << " " << centre.x << " " << feather << " " << roundness;
                    instance.set("Progress", 1e-7);
                    const Pixels begin = draw(instance, size, black, white);
                    EXPECT_LE(std::count_if(begin.begin(), begin.end(), [](uint32_t p) { return (p & 255) > 2; }), 4)
                        << shape << " " << centre.x << " " << feather << " " << roundness;
                }
            }
        }
    }
}

/// How many pixels are neither black nor white.
ptrdiff_t greys(const Pixels& pixels) {
    return std::count_if(pixels.begin(), pixels.end(), [](uint32_t p) { return (p & 255) > 8 && (p & 255) < 247; });
}

// A ramp that is narrower than a pixel is drawn as none: as a hard edge, with greys along it.
TEST(Frei0rFeather, BelowAPixelIsAHardAntialiasedEdge) {
    const Size size = {64, 48};
    const Pixels black(size.pixels(), 0xff000000), white(size.pixels(), 0xffffffff);
    const LoadedPlugin wipe("wipe"), spotlight("spotlight");
    const auto wiped = [&](double shape, double feather_px) {
        Instance instance(wipe, size.width, size.height);
        instance.set("Progress", 0.37);
        instance.set("Shape", shape);
        instance.set("Feather", feather_px / size.height);
        return draw(instance, size, black, white);
    };
    for (const double shape : {0.0, 0.25, 0.5, 0.75}) {
        const Pixels hard = wiped(shape, 0);
        EXPECT_GT(greys(hard), 20) << shape;
        for (const double feather_px : {0.01, 0.5, 0.99})
            EXPECT_EQ(difference(size, wiped(shape, feather_px).data(), hard), "") << shape << " " << feather_px;
        EXPECT_NE(wiped(shape, 1.5), hard) << shape;
    }
    const auto lit = [&](double feather_px) {
        Instance instance(spotlight, size.width, size.height);
        instance.set("Darkness", 1);
        instance.set("Feather", feather_px / size.height);
        return draw(instance, size, white, white);
    };
    const Pixels hard = lit(0);
    EXPECT_GT(greys(hard), 20);
    for (const double feather_px : {0.01, 0.5, 0.99})
        EXPECT_EQ(difference(size, lit(feather_px).data(), hard), "") << feather_px;
    EXPECT_NE(lit(1.5), hard);
}

// Opaque pictures give opaque frames, but for what a corner pin leaves uncovered.
TEST(Frei0rAlpha, OpaqueStaysOpaque) {
    for (const std::string effect : kEffects) {
        const LoadedPlugin plugin(effect);
        for (int round = 0; round < rounds(30); ++round) {
            Random random(round_seed(round));
            const Size size = random.pick({Size{64, 48}, {17, 33}});
            Pixels first = make_picture(random, size), second = make_picture(random, size);
            for (Pixels* picture : {&first, &second}) {
                for (uint32_t& pixel : *picture)
                    pixel |= 0xff000000;
            }
            Instance instance(plugin, size.width, size.height);
            set_and_expect(instance, effect, random, size, first, second);
            if (effect == "corner_pin")
                instance.set("Transparent", 0);
            for (const uint32_t pixel : draw(instance, size, first, second))
                ASSERT_EQ(pixel >> 24, 255u) << effect << ", " << how_to_repeat(random);
        }
    }
}

TEST(Frei0rCornerPin, HasColoursOfItsOwnAtTransparentEdges) {
    const LoadedPlugin plugin("corner_pin");
    const Size size = {64, 48};
    const Pixels white(size.pixels(), 0xffffffff);
    Instance instance(plugin, size.width, size.height);
    instance.set("Top left", 0.21, 0.13);
    instance.set("Top right", 0.83, 0.02);
    instance.set("Bottom right", 0.9, 0.97);
    instance.set("Bottom left", 0.05, 0.8);
    int edge = 0, outside = 0;
    for (const uint32_t pixel : draw(instance, size, white, white)) {
        const uint32_t alpha = pixel >> 24;
        outside += pixel == 0;
        if (alpha == 0 || alpha == 255)
            continue;
        ++edge;
        for (int k = 0; k < 3; ++k)  // white, but for the part of it that a byte of this alpha cannot tell
            EXPECT_GE((pixel >> 8 * k & 255) * (alpha + 1), 254 * alpha) << std::hex << pixel;
    }
    EXPECT_GT(edge, 50);
    EXPECT_GT(outside, 500);
}

TEST(Frei0rCornerPin, KeepsColoursAtTransparentEdges) {
    const LoadedPlugin plugin("corner_pin");
    const Size size = {64, 48};
    constexpr int kColor = 100;
    const Pixels grey(size.pixels(), 0xff000000 | kColor * 0x010101);
    Instance instance(plugin, size.width, size.height);
    instance.set("Top left", 0.21, 0.13);
    instance.set("Top right", 0.83, 0.02);
    instance.set("Bottom right", 0.9, 0.97);
    instance.set("Bottom left", 0.05, 0.8);
    int edge = 0;
    for (const uint32_t pixel : draw(instance, size, grey, grey)) {
        const int alpha = static_cast<int>(pixel >> 24);
        if (alpha == 0 || alpha == 255)
            continue;
        ++edge;
        for (int k = 0; k < 3; ++k)  // of the up to 255 / alpha + 1 colours that blend to the same byte, the middle one
            EXPECT_LE(2 * std::abs(static_cast<int>(pixel >> 8 * k & 255) - kColor) * alpha, 255 + alpha)
                << std::hex << pixel;
    }
    EXPECT_GT(edge, 50);
}

// A checkerboard pinned to a trapezium: its middle line is seen where perspective puts it, not in the middle.
TEST(Frei0rCornerPin, KeepsPerspective) {
    const LoadedPlugin plugin("corner_pin");
    const Size size = {64, 64};
    Pixels halves(size.pixels(), 0xff000000);
    std::fill(halves.begin() + static_cast<ptrdiff_t>(size.pixels() / 2), halves.end(), 0xffffffff);
    Instance instance(plugin, size.width, size.height);
    instance.set("Top left", 0.25, 0);
    instance.set("Top right", 0.75, 0);
    const Pixels out = draw(instance, size, halves, halves);
    // The top is twice as far away as the bottom, so that the middle lies at 1/3 of the height.
    EXPECT_EQ(out[20 * 64 + 32], 0xff000000);
    EXPECT_EQ(out[23 * 64 + 32], 0xffffffff);
}

TEST(Frei0rCornerPin, TakesDegenerateCorners) {
    const LoadedPlugin plugin("corner_pin");
    const Size size = {64, 48};
    Random random(3);
    const Pixels picture = make_picture(random, size);
    const auto pinned = [&](const std::array<Place, 4>& corners) {
        Instance instance(plugin, size.width, size.height);
        const char* const names[] = {"Top left", "Top right", "Bottom right", "Bottom left"};
        for (size_t i = 0; i < 4; ++i)
            instance.set(names[i], corners[i].x, corners[i].y);
        const Pixels out = draw(instance, size, picture, picture);
        const Pixels want = expected_corner_pin(size.width, size.height, picture, {.corners = corners});
        EXPECT_EQ(difference(size, out.data(), want), "");
        return std::count_if(out.begin(), out.end(), [](uint32_t pixel) { return pixel != 0; });
    };
    EXPECT_EQ(pinned({{{0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}}}), 0) << "all the same";
    EXPECT_EQ(pinned({{{0, 0.5}, {0.3, 0.5}, {0.6, 0.5}, {1, 0.5}}}), 0) << "on a line";
    EXPECT_GT(pinned({{{0, 0}, {1, 0}, {0, 1}, {1, 1}}}), 1000) << "crossing";
    EXPECT_GT(pinned({{{0, 0}, {1, 0}, {0.2, 0.2}, {0, 1}}}), 300) << "dented";
    EXPECT_GT(pinned({{{0, 0}, {1, 0}, {0.5, 0.5}, {0, 1}}}), 1000) << "three on a line";
    EXPECT_GT(pinned({{{1, 0}, {0, 0}, {0, 1}, {1, 1}}}), 3000) << "mirrored";
    EXPECT_GT(pinned({{{-1, -1}, {2, -1}, {2, 2}, {-1, 2}}}), 3000) << "larger than the frame";
}

TEST(Frei0rPlaces, NumbersCountWhereTheyHaveMoved) {
    const LoadedPlugin plugin("spotlight");
    const Size size = {64, 48};
    Random random(3);
    const Pixels picture = make_picture(random, size);
    Instance instance(plugin, size.width, size.height);
    instance.set("Centre", 0.25, 0.75);
    instance.set("Centre across", 0.875);
    const Pixels want = expected_spotlight(size.width, size.height, picture, {.centre = {0.875, 0.75}});
    EXPECT_EQ(draw(instance, size, picture, picture), want);
    instance.set("Centre across", 0.5);
    EXPECT_EQ(draw(instance, size, picture, picture),
              expected_spotlight(size.width, size.height, picture, {.centre = {0.25, 0.75}}));
}

}  // namespace
}  // namespace zepbmp::test
