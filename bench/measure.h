/// \file
/// Checks a subject's bytes, then times them.
#pragma once

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "subject.h"

namespace zepbmp::bench {

enum class RowKind { kKernels, kYardstick, kPeer };

/// One who did the job, and how long a call took in each repetition: processor time; on Windows, which counts that in
/// steps of 10 ms and more, elapsed time.
struct Row {
    std::string name;
    RowKind kind;
    int register_bytes = 0;  ///< of the kernel set; 0 for level 0 and for others
    std::vector<double> seconds = {};
};

/// A kernel set writes other bytes than it should, or a peer draws another picture. Nothing of the subject was timed.
struct WrongBytes : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Effort {
    int repetitions;
    double seconds;  ///< the least that a repetition takes; see Row::seconds
};

/// Once, before the first measurement.
void prepare_measurements();

/// Runs every kernel set of this machine, the yardstick and the peers, their repetitions shuffled among each other.
/// `copy` gets what Google Benchmark reports, or is null.
std::vector<Row> measure(const Subject& subject, Effort effort, benchmark::BenchmarkReporter* copy);

/// A peer's picture beside the subject's.
struct Likeness {
    std::string peer;
    double mean_difference;  ///< of a written byte, or of a 16-bit weight's upper eight bits of 12
    double share_beyond;     ///< of the written bytes, those that differ by more than kBeyond
};
constexpr int kBeyond = 8;

/// Checks the bytes of every kernel set, and the pictures of those peers who make the same from the same frames. Times
/// nothing.
std::vector<Likeness> verify(const Subject& subject);

}  // namespace zepbmp::bench
