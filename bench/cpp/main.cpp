/// \file
/// zepbmp-bench-cpp. The three take turns, and each one's median counts:
///     zepbmp-bench-cpp --benchmark_enable_random_interleaving=true --benchmark_repetitions=15
#include "compose.h"

BENCHMARK(compose_c);
BENCHMARK(compose_checked);
BENCHMARK(compose_unchecked);

BENCHMARK_MAIN();
