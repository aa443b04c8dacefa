/// \file
/// zepbmp.hpp alone: nothing else has to be included before it.
#include "zepbmp.hpp"

static_assert(zepbmp::kChecks == (ZEPBMP_CHECKS != 0));
