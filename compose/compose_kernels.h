/// \file
/// The kernel sets that the selection table of composition picks from.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

/// The reference formulas; complete on its own.
extern const ComposeSlots kComposePlain;

/// The vector arithmetic, one set per register width; all of them write the same bytes. compose/mix_inl.h tells it.
extern const ComposeSlots kComposeMmx;
extern const ComposeSlots kComposeMmxExt;
extern const ComposeSlots kComposeSse2;
extern const ComposeSlots kComposeAvx2;
extern const ComposeSlots kComposeAvx512;

/// The one member of slot color_rgbq for the levels: also in the vector sets of the levels.
ComposeColorKernel color_rgbq_plain;

}  // namespace zepbmp
