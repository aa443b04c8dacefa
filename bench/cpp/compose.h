/// \file
/// The same call, small enough for its overhead to show: 16 x 16 pixels of YUY2 under 16-bit weights.
#pragma once

#include <benchmark/benchmark.h>

constexpr int kSide = 16;

void compose_c(benchmark::State& state);
void compose_checked(benchmark::State& state);
void compose_unchecked(benchmark::State& state);
