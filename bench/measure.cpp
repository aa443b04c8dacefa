#include "measure.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "core/kernel_tables.h"

namespace zepbmp::bench {
namespace {

#ifdef _WIN32
constexpr bool kElapsedTime = true;
#else
constexpr bool kElapsedTime = false;
#endif

/// What the library's tables are filled with for a row.
struct KernelSet {
    const char* name;
    int level;
    int register_bytes;
    size_t stream_threshold;

    void select() const {
        fill_kernel_tables(level, register_bytes);
        stream_threshold_bytes = stream_threshold;
    }
};

std::vector<KernelSet> kernel_sets(const Subject& subject) {
    static const size_t default_threshold = stream_threshold_bytes;  // before any select()
    if (subject.compares_stores) {
        const int widest = usable_register_bytes();
        return {{"cached", kLevelSse2, widest, SIZE_MAX}, {"streamed", kLevelSse2, widest, 0}};
    }
    std::vector<KernelSet> sets = {{"plain", kLevelPlain, 0, default_threshold}};
    for (const KernelSet& set :
         {KernelSet{"SSE2", kLevelSse2, 16, default_threshold}, KernelSet{"AVX2", kLevelSse2, 32, default_threshold},
          KernelSet{"AVX-512", kLevelSse2, 64, default_threshold}}) {
        if (set.register_bytes <= usable_register_bytes())
            sets.push_back(set);
    }
    return sets;
}

/// Frames of a call that nobody else uses, as random as the ring's.
struct PrivateSet {
    std::vector<Frame> owned;
    FrameSet frames;

    explicit PrivateSet(const FrameSet& like) {
        for (const Bitmap* frame : like) {
            owned.push_back(clone(*frame));
            frames.push_back(owned.back().get());
        }
    }
};

void compare(const std::string& what, const Bitmap& got, const Bitmap& want) {
    const size_t bytes = stored_bytes(want);
    const uint8_t* const wrong = std::mismatch(want.pixels, want.pixels + bytes, got.pixels).first;
    const auto offset = static_cast<size_t>(wrong - want.pixels);
    if (offset == bytes)
        return;
    const auto pitch = static_cast<size_t>(want.pitch);
    throw WrongBytes(what + ": byte " + std::to_string(offset % pitch) + " of line " + std::to_string(offset / pitch) +
                     " is " + std::to_string(got.pixels[offset]) + ", not " + std::to_string(*wrong));
}

void check_set(const Subject& subject, const KernelSet& set, const FrameSet& inputs, const FrameSet& want) {
    const PrivateSet got(inputs);
    set.select();
    subject.call(got.frames);
    for (size_t i = 0; i < subject.written; ++i)
        compare(subject.name + ", " + set.name + (i > 0 ? ", frame " + std::to_string(i) : ""), *got.frames[i],
                *want[i]);
}

void check(const Subject& subject, const std::vector<KernelSet>& sets, const FrameSet& inputs) {
    std::optional<PrivateSet> want;  // of the level before
    int want_level = 0;
    for (const KernelSet& set : sets) {
        if (!want || want_level != set.level) {
            want.emplace(inputs);
            want_level = set.level;
            subject.model(want->frames, set.level);
        }
        check_set(subject, set, inputs, want->frames);
    }
}

/// How far `theirs` is from `ours`, of which a call writes `pixels`.
Likeness likeness(const std::string& peer, const Bitmap& theirs, const Bitmap& ours, double pixels) {
    constexpr int kWeightToByte = 4;  // 12 bits to 8
    double sum = 0, beyond = 0;
    const auto add = [&](int a, int b) {
        const int difference = std::abs(a - b);
        sum += difference;
        beyond += difference > kBeyond;
    };
    const bool weights = ours.format == BMP_FMT_PWRW;
    for (size_t i = 0; i < stored_bytes(ours); i += weights ? 2 : 1) {
        const uint8_t *const a = theirs.pixels + i, *const b = ours.pixels + i;
        if (weights)
            add((a[0] | a[1] << 8) >> kWeightToByte, (b[0] | b[1] << 8) >> kWeightToByte);
        else
            add(*a, *b);
    }
    const double samples = pixels * (weights ? 1 : ours.bytes_per_pixel);
    return {peer, sum / samples, beyond / samples};
}

/// Sorts the repetitions' times by row.
class Collector : public benchmark::BenchmarkReporter {
public:
    Collector(std::vector<Row>& rows, BenchmarkReporter* copy) : rows_(rows), copy_(copy) {}

    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const std::string& name = run.run_name.function_name;
            const auto row = std::find_if(rows_.begin(), rows_.end(),
                                          [&](const Row& candidate) { return name.ends_with('/' + candidate.name); });
            if (row == rows_.end() || run.error_occurred || run.iterations == 0)
                throw std::runtime_error("Google Benchmark reported a run that was not asked for: " + name);
            const double seconds = kElapsedTime ? run.real_accumulated_time : run.cpu_accumulated_time;
            row->seconds.push_back(seconds / static_cast<double>(run.iterations));
        }
        if (copy_)
            copy_->ReportRuns(runs);
    }

private:
    std::vector<Row>& rows_;
    BenchmarkReporter* copy_;
};

void time_calls(benchmark::State& state, const Subject& subject, const Call& call, Ring& ring) {
    for (auto _ : state)
        call(ring.next());
    const auto calls = static_cast<double>(state.iterations());
    state.counters["pixels"] = benchmark::Counter(subject.pixels * calls, benchmark::Counter::kIsRate);
    state.counters["bytes"] = benchmark::Counter(subject.bytes * calls, benchmark::Counter::kIsRate);
}

}  // namespace

std::vector<Likeness> verify(const Subject& subject) {
    constexpr double kMostDifference = 1, kMostBeyond = 0.01;
    const std::vector<KernelSet> sets = kernel_sets(subject);
    FramePool pool;
    const Ring ring(pool, subject.frames, 1);
    check(subject, sets, ring.first());

    const PrivateSet waves(ring.first());
    for (size_t role = 0; role < waves.frames.size(); ++role)
        paint_waves(*waves.frames[role], role);
    const PrivateSet ours(waves.frames);
    subject.call(ours.frames);
    std::vector<Likeness> all;
    for (const Peer& peer : subject.peers) {
        if (peer.picture == Picture::kOther)
            continue;
        const PrivateSet theirs(waves.frames);
        const bool planar = peer.picture == Picture::kSemiPlanar;
        if (planar)
            std::for_each(theirs.frames.begin(), theirs.frames.end(), [](Bitmap* frame) { to_semi_planar(*frame); });
        peer.call(theirs.frames);
        if (planar)
            from_semi_planar(*theirs.frames.front());
        all.push_back(likeness(peer.name, *theirs.frames.front(), *ours.frames.front(), subject.pixels));
        if (!(all.back().mean_difference <= kMostDifference) || !(all.back().share_beyond <= kMostBeyond))
            throw WrongBytes(subject.name + ": " + peer.name + " draws another picture: mean difference " +
                             std::to_string(all.back().mean_difference) + ", " +
                             std::to_string(100 * all.back().share_beyond) + " % of the bytes differ by more than " +
                             std::to_string(kBeyond));
    }
    return all;
}

void prepare_measurements() {
    static char program[] = "zepbmp-bench";  // Google Benchmark keeps the pointer
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    char* arguments[] = {program, interleave, nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments);
}

std::vector<Row> measure(const Subject& subject, Effort effort, benchmark::BenchmarkReporter* copy) {
    const std::vector<KernelSet> sets = kernel_sets(subject);
    const size_t spanned = subject.cached ? 1 : ring_bytes();
    FramePool pool;
    Ring own(pool, subject.frames, spanned);
    check(subject, sets, own.first());

    std::vector<Row> rows;
    benchmark::ClearRegisteredBenchmarks();
    const auto add = [&](Row row, auto timed) {
        benchmark::internal::Benchmark* const registered =
            benchmark::RegisterBenchmark((subject.name + '/' + row.name).c_str(), timed)
                ->Repetitions(effort.repetitions)
                ->MinTime(effort.seconds);
        if (kElapsedTime)
            registered->UseRealTime();
        rows.push_back(std::move(row));
    };
    for (const KernelSet& set : sets) {
        add({set.name, RowKind::kKernels, set.register_bytes}, [&subject, &own, set](benchmark::State& state) {
            set.select();
            time_calls(state, subject, subject.call, own);
        });
    }
    std::vector<Ring> rings;
    rings.reserve(1 + subject.peers.size());  // they stay where they are
    const auto add_peer = [&](const Peer& peer, RowKind kind) {
        Ring& ring = rings.emplace_back(pool, peer.frames, spanned);
        add({peer.name, kind},
            [&subject, &peer, &ring](benchmark::State& state) { time_calls(state, subject, peer.call, ring); });
    };
    add_peer(subject.yardstick, RowKind::kYardstick);
    for (const Peer& peer : subject.peers)
        add_peer(peer, RowKind::kPeer);

    Collector collector(rows, copy);
    benchmark::RunSpecifiedBenchmarks(&collector);
    for (const Row& row : rows) {
        if (row.seconds.size() != static_cast<size_t>(effort.repetitions))
            throw std::runtime_error(subject.name + ", " + row.name + ": repetitions are missing");
    }
    return rows;
}

}  // namespace zepbmp::bench
