#include "calls_inl.h"

static_assert(zepbmp::kChecks);

Results calls_checked() { return make_calls(); }
