/// \file
/// What a person reads: rates, ratios within one run, and how they stand to the targets.
#pragma once

#include <cstdio>
#include <vector>

#include "measure.h"
#include "subject.h"

namespace zepbmp::bench {

struct Measured {
    const Subject* subject;
    std::vector<Row> rows;
};

/// Every row of a subject: medians, their spread, ratios to level 0, to the yardstick and to the peers.
void print_rows(std::FILE* out, const Measured& measured);

/// What a check found.
void print_likenesses(std::FILE* out, const Subject& subject, const std::vector<Likeness>& likenesses);

/// One line a subject, as a Markdown table: the kernel sets' rates and the best one's ratios.
void print_summary(std::FILE* out, const std::vector<Measured>& all);

/// One line a target, as a Markdown table: asked, reached, met or not.
void print_targets(std::FILE* out, const std::vector<Measured>& all);

/// The stores' subjects, as a Markdown table: bytes a second through the caches and past them, by footprint.
void print_stores(std::FILE* out, const std::vector<Measured>& all);

}  // namespace zepbmp::bench
