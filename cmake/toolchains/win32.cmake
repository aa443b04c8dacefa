# 32-bit Windows by mingw-w64, for a processor without MMX and SSE. Per-set files add their own instruction set.
set(zepbmp_processor i686)
set(zepbmp_bits 32)
set(zepbmp_baseline "-march=i686 -mtune=generic -mno-mmx -mno-sse -mfpmath=387")
set(CMAKE_C_FLAGS_INIT "${zepbmp_baseline}")
set(CMAKE_CXX_FLAGS_INIT "${zepbmp_baseline}")
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
