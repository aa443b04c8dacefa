#pragma once

#include <string>
#include <vector>

#include "options.h"

namespace zepbmp::transition {

struct Report {
    std::string summary;                // one line: what was written
    std::vector<std::string> warnings;  // one line each
};

/// Makes the video, and the contact sheet if one is asked for. Throws Error or Interrupted; then nothing was written.
Report make_transition(const Options& options);

}  // namespace zepbmp::transition
