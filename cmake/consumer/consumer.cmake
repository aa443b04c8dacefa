# Tests that install the build and use it as a stranger would, from projects outside the tree:
#   check.install        into an empty prefix, which is then moved; the others use what is there now
#   check.pkgconfig      a C program by pkg-config, shared and static
#   check.find_package   C++ and C programs by find_package, shared and static
#   check.msvc_linker    Windows: a program by a Microsoft-style linker and zepbmp.lib
#   check.subdirectory   C++ programs in whose project the source is a subdirectory, shared and static; builds the
#                        library again, so one target is enough

set(consumer ${PROJECT_SOURCE_DIR}/cmake/consumer)
if(CMAKE_TOOLCHAIN_FILE)
    set(configure -DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE})
else()
    set(configure -DCMAKE_C_COMPILER=${CMAKE_C_COMPILER} -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER})
endif()
file(CONFIGURE OUTPUT consumer/settings.cmake @ONLY CONTENT [[
set(BUILD "@PROJECT_BINARY_DIR@")
set(SOURCE "@PROJECT_SOURCE_DIR@")
set(PREFIX "@PROJECT_BINARY_DIR@/consumer/moved")
set(WORK "@PROJECT_BINARY_DIR@/consumer/${NAME}")
set(C_COMPILER "@CMAKE_C_COMPILER@")
separate_arguments(C_FLAGS UNIX_COMMAND "@CMAKE_C_FLAGS@")
set(CONFIGURE "@configure@")
set(EMULATOR "@CMAKE_CROSSCOMPILING_EMULATOR@")
set(BITS "@bits@")
set(LLD_LINK "@ZEPBMP_LLD_LINK@")
set(LLD_OPTIONS "@zepbmp_msvc_machine@")
]])

function(zepbmp_consumer_test name)
    add_test(NAME check.${name} COMMAND ${CMAKE_COMMAND} -D NAME=${name}
        -D SETTINGS=${PROJECT_BINARY_DIR}/consumer/settings.cmake -P ${consumer}/test_${name}.cmake)
    set_tests_properties(check.${name} PROPERTIES ${ARGN})
endfunction()

zepbmp_consumer_test(install FIXTURES_SETUP installed)
zepbmp_consumer_test(pkgconfig FIXTURES_REQUIRED installed)
zepbmp_consumer_test(find_package FIXTURES_REQUIRED installed)
if(WIN32)
    zepbmp_consumer_test(msvc_linker FIXTURES_REQUIRED installed)
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT ZEPBMP_32BIT)
    zepbmp_consumer_test(subdirectory TIMEOUT 1200 PROCESSORS 2)
endif()
