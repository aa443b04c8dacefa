#define ZEPBMP_CHECKS 0
#include "calls_inl.h"

static_assert(!zepbmp::kChecks);

Results calls_unchecked() {
    // What would be refused is not.
    Results results = make_calls();
    results.push_back({"Level", zepbmp::Level(5000).value() == 5000, {}});
    return results;
}
