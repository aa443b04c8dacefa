/// \file
/// The coverage kernels' tables: one for each instruction set, all writing the same bytes.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

extern const CoverKernels kCoverPlain, kCoverSse2, kCoverAvx2, kCoverAvx512;

}  // namespace zepbmp
