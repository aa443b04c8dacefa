#pragma once

#include "options.h"
#include "transition.h"

namespace zepbmp::transition {

/// Encodes the parts' pictures and sound as one run for the whole transition would have done. Throws Error or
/// Interrupted; then nothing was written.
Report join_parts(const JoinOptions& options);

}  // namespace zepbmp::transition
