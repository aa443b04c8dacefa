#define ZEPBMP_CHECKS 0
#include "compose_inl.h"

void compose_unchecked(benchmark::State& state) { measure(state); }
