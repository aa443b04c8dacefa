#include "measure.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include "core/kernel_tables.h"

namespace zepbmp::bench {
namespace {

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
    const Bitmap& target() const { return *frames.front(); }
};

void check_set(const Subject& subject, const KernelSet& set, const FrameSet& inputs, const Bitmap& want) {
    const PrivateSet got(inputs);
    set.select();
    subject.call(got.frames);
    const size_t bytes = stored_bytes(want);
    const uint8_t* const wrong = std::mismatch(want.pixels, want.pixels + bytes, got.target().pixels).first;
    const auto offset = static_cast<size_t>(wrong - want.pixels);
    if (offset == bytes)
        return;
    const auto pitch = static_cast<size_t>(want.pitch);
    throw WrongBytes(subject.name + ", " + set.name + ": byte " + std::to_string(offset % pitch) + " of line " +
                     std::to_string(offset / pitch) + " is " + std::to_string(got.target().pixels[offset]) + ", not " +
                     std::to_string(*wrong));
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
        check_set(subject, set, inputs, want->target());
    }
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
            row->seconds.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
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
        benchmark::RegisterBenchmark((subject.name + '/' + row.name).c_str(), timed)
            ->Repetitions(effort.repetitions)
            ->MinTime(effort.seconds);
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
