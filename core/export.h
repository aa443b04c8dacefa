/// \file
/// How an exported function is defined: `BMP_EXPORT void BMP_CALL bmp_clear(...) { ... }`.
#pragma once

// A host may call with its stack aligned to 4 bytes only (32-bit Windows, old 32-bit Linux code), so each entry point
// aligns it again before anything below spills a vector register.
#if defined(__i386__)
#define BMP_REALIGN __attribute__((force_align_arg_pointer))
#else
#define BMP_REALIGN
#endif

// On Windows the exported names come from platform/exports.def alone.
#if defined(_WIN32)
#define BMP_EXPORT extern "C" BMP_REALIGN
#else
#define BMP_EXPORT extern "C" BMP_REALIGN __attribute__((visibility("default")))
#endif
