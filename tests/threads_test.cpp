/// \file
/// Calls on distinct bitmaps at the same time.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/export_calls.h"
#include "support/rects.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

class Threads : public WithTables {};

TEST_P(Threads, ComposeDifferentFramesAtOnce) {
    const UseTables use(GetParam());
    constexpr int kThreads = 4;
    const auto run_all = [](uint64_t seed) {
        Scene scene(seed);
        Caller caller;
        for (const ExportCall& call : export_calls())
            call.run(caller, scene);
        return scene.contents();
    };
    std::vector<std::vector<uint8_t>> want;
    for (int i = 0; i < kThreads; ++i)
        want.push_back(run_all(static_cast<uint64_t>(i)));

    std::atomic<int> waiting{kThreads}, wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            for (int k = 0; k < rounds(30); ++k)
                wrong += run_all(static_cast<uint64_t>(i)) != want[static_cast<size_t>(i)];
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

// One frame as the source of two calls: reading is shared.
TEST_P(Threads, ReadOneSourceAtOnce) {
    const UseTables use(GetParam());
    const OwnedBitmap a = make_noise(320, 60, BMP_FMT_YUY2, 1), b = make_noise(320, 60, BMP_FMT_YUY2, 2),
                      w = make_weights(320, 60, 1000);
    const OwnedBitmap dest[2] = {make_bitmap(320, 60, BMP_FMT_YUY2), make_bitmap(320, 60, BMP_FMT_YUY2)};
    const auto compose = [&](const OwnedBitmap& d) {
        for (int k = 0; k < rounds(30); ++k)
            library().compose(d.get(), a.get(), b.get(), w.get(), 0);
    };
    std::thread one([&] { compose(dest[0]); }), other([&] { compose(dest[1]); });
    one.join();
    other.join();
    EXPECT_EQ(snapshot(dest[0]), snapshot(dest[1]));
}

TEST_P(Threads, MapOneSourceAtOnce) {
    const UseTables use(GetParam());
    const OwnedBitmap source = make_noise(320, 60, BMP_FMT_YUY2, 1);
    const OwnedBitmap dest[2] = {make_bitmap(200, 40, BMP_FMT_YUY2), make_bitmap(200, 40, BMP_FMT_YUY2)},
                      map[2] = {make_weights(200, 40, 0), make_weights(200, 40, 0)};
    const auto map_it = [&](int i) {
        for (int k = 0; k < rounds(30); ++k)
            map_rect({.dest = dest[i].get(),
                      .weight_map = map[i].get(),
                      .to = {0.5f, 0.25f, 200, 40},
                      .src = source.get(),
                      .from = {-3, 1, 320, 60}});
    };
    std::thread one(map_it, 0), other(map_it, 1);
    one.join();
    other.join();
    EXPECT_EQ(snapshot(dest[0]), snapshot(dest[1]));
    EXPECT_EQ(snapshot(map[0]), snapshot(map[1]));
}

ZEPBMP_FOR_ALL_TABLES(Threads);

}  // namespace
}  // namespace zepbmp::test
