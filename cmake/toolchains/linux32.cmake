# 32-bit Linux, for a processor without MMX and SSE. Per-set files add their own instruction set.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(zepbmp_baseline "-m32 -march=i686 -mtune=generic -mno-mmx -mno-sse -mfpmath=387")
set(CMAKE_C_FLAGS_INIT "${zepbmp_baseline}")
set(CMAKE_CXX_FLAGS_INIT "${zepbmp_baseline}")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
