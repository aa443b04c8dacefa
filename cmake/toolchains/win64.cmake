# 64-bit Windows by mingw-w64. Per-set files add their own instruction set.
set(zepbmp_processor x86_64)
set(zepbmp_bits 64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
