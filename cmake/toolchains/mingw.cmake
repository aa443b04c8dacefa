# What both Windows toolchains share. zepbmp_processor is the system processor's name, which begins the compilers' names;
# zepbmp_bits is the width of an address.
# -static takes in the thread library too, so that nothing but system DLLs is imported.
set(zepbmp_mingw ${zepbmp_processor}-w64-mingw32)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${zepbmp_processor})
set(CMAKE_C_COMPILER ${zepbmp_mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${zepbmp_mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${zepbmp_mingw}-windres)
set(CMAKE_DLLTOOL ${zepbmp_mingw}-dlltool)
set(zepbmp_link "-static -static-libgcc -static-libstdc++")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${zepbmp_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${zepbmp_link}")
set(CMAKE_FIND_ROOT_PATH /usr/${zepbmp_mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
# Test programs and tools run through Wine.
get_filename_component(CMAKE_CROSSCOMPILING_EMULATOR
    ${CMAKE_CURRENT_LIST_DIR}/../../scripts/lib/run-win${zepbmp_bits} ABSOLUTE)
