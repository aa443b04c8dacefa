#include "fuzz/harness.h"

#include <cstdio>
#include <cstdlib>

namespace zepbmp::fuzz {

void fail(const char* what) {
    std::fprintf(stderr, "error: %s\n", what);
    std::abort();
}

}  // namespace zepbmp::fuzz

/// A few freed blocks are enough to catch a use after free; more would only cost fresh pages.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=4"; }
