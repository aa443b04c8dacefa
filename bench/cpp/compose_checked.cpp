#include "compose_inl.h"

void compose_checked(benchmark::State& state) { measure(state); }
