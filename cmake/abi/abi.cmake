# check.abi: the exports, their arguments and the records are those that zepbmp-1-<processor>.abi describes; any
# difference fails. It reads debug information, so the files that define the exports are built once more with it, as a
# library that is complete but for what they call. How a change is made: docs/compatibility.md.
#
# The target abi-description writes the description anew.

# Clang describes the same types in other words.
if(WIN32 OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    return()
endif()
find_program(ZEPBMP_ABIDW abidw DOC "Describes a library's binary interface (package abigail-tools)")
find_program(ZEPBMP_ABIDIFF abidiff DOC "Compares two descriptions (package abigail-tools)")
if(NOT ZEPBMP_ABIDW OR NOT ZEPBMP_ABIDIFF)
    message(FATAL_ERROR "No abidw and abidiff: install the package 'abigail-tools', "
        "or build without tests (ZEPBMP_TESTS=OFF)")
endif()

set(abi ${PROJECT_SOURCE_DIR}/cmake/abi)
set(exports
    compose/compose.cpp
    core/bitmap.cpp
    core/blt.cpp
    core/clear_copy.cpp
    core/display.cpp
    core/draw.cpp
    mapping/polygon/map_polygon.cpp
    mapping/rect/map_rect.cpp
    shapes/alpha_circle.cpp
    shapes/alpha_rect.cpp
)
list(TRANSFORM exports PREPEND ${PROJECT_SOURCE_DIR}/)
add_library(zepbmp_abi SHARED ${exports})
zepbmp_library_flags(zepbmp_abi)
target_compile_options(zepbmp_abi PRIVATE -O0 -g -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_include_directories(zepbmp_abi PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(zepbmp_abi PRIVATE $<TARGET_PROPERTY:zepbmp_objects,COMPILE_DEFINITIONS>)
target_link_options(zepbmp_abi PRIVATE LINKER:--version-script=${zepbmp_map} LINKER:--unresolved-symbols=ignore-all)
set_target_properties(zepbmp_abi PROPERTIES OUTPUT_NAME zepbmp VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${zepbmp_map} LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/abi)

if(ZEPBMP_32BIT)
    set(description ${abi}/zepbmp-${PROJECT_VERSION_MAJOR}-i686.abi)
else()
    set(description ${abi}/zepbmp-${PROJECT_VERSION_MAJOR}-x86_64.abi)
endif()
set(check_abi ${Python3_EXECUTABLE} ${abi}/check_abi.py --abidw ${ZEPBMP_ABIDW} --abidiff ${ZEPBMP_ABIDIFF})
add_test(NAME check.abi COMMAND ${check_abi} compare ${description} $<TARGET_FILE:zepbmp_abi>)
if(NOT ZEPBMP_32BIT)
    add_test(NAME check.abi_self_test COMMAND ${check_abi} self-test ${PROJECT_SOURCE_DIR} ${CMAKE_CXX_COMPILER})
endif()
add_custom_target(abi-description COMMAND ${check_abi} describe ${description} $<TARGET_FILE:zepbmp_abi>
    DEPENDS zepbmp_abi VERBATIM)
