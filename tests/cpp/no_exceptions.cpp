/// \file
/// Compiled without exceptions and RTTI.
#include "no_exceptions.h"

#include "zepbmp.hpp"

int clear_without_exceptions(int field) {
    zepbmp::Bitmap bitmap(4, 4, zepbmp::Format::a8);
    *bitmap.pointer(0, 0) = 1;
    zepbmp::clear(bitmap, static_cast<zepbmp::Field>(field));
    return *bitmap.pointer(0, 0);
}
