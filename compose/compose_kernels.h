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

/// The one kernel of slot color_rgbq, at every level and register width: it passes a call on to the form in force.
/// All forms write the same bytes; those of kComposeAvx2 and kComposeAvx512 stand in their sets.
ComposeColorKernel color_rgbq;
ComposeColorKernel color_rgbq_plain;
extern ComposeColorKernel* color_rgbq_form;

}  // namespace zepbmp
