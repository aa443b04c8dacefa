# Tests of what was built rather than of what it does: instructions in the objects, names in the libraries, the package.
# Instrumented builds hold code of their own kind and are left out.
if(ZEPBMP_SANITIZE OR ZEPBMP_COVERAGE)
    return()
endif()

find_package(Python3 REQUIRED COMPONENTS Interpreter)
# GNU binutils, whose listing the script reads; a clang build would name others.
if(WIN32)
    set(objdump ${CMAKE_OBJDUMP})
    set(nm ${CMAKE_NM})
else()
    find_program(ZEPBMP_OBJDUMP objdump REQUIRED)
    find_program(ZEPBMP_NM nm REQUIRED)
    set(objdump ${ZEPBMP_OBJDUMP})
    set(nm ${ZEPBMP_NM})
endif()

set(checks ${PROJECT_SOURCE_DIR}/cmake/checks)
set(header ${PROJECT_SOURCE_DIR}/include/zepbmp.h)
math(EXPR bits "${CMAKE_SIZEOF_VOID_P} * 8")
set(check_objects ${Python3_EXECUTABLE} ${checks}/check_objects.py --bits ${bits} --objdump ${objdump} --nm ${nm})
if(WIN32 AND NOT ZEPBMP_32BIT)
    list(APPEND check_objects --unaligned-stack)
endif()

file(GENERATE OUTPUT objects.txt CONTENT "$<JOIN:$<TARGET_OBJECTS:zepbmp_objects>,\n>\n")
add_test(NAME check.instructions COMMAND ${check_objects} ${PROJECT_BINARY_DIR}/objects.txt)

function(zepbmp_check_symbols name)
    add_test(NAME check.${name} COMMAND ${Python3_EXECUTABLE} ${checks}/check_symbols.py --header ${header}
        --nm ${nm} --objdump ${objdump} ${ARGN})
endfunction()

if(WIN32)
    zepbmp_check_symbols(def def ${zepbmp_def})
    zepbmp_check_symbols(dll --bits ${bits} dll $<TARGET_FILE:zepbmp>)
    zepbmp_check_symbols(import_library --bits ${bits} implib $<TARGET_LINKER_FILE:zepbmp>)
    zepbmp_check_symbols(import_library_msvc --bits ${bits} implib ${ZEPBMP_MSVC_IMPORT_LIBRARY})
    zepbmp_check_symbols(archive --windows --bits ${bits} archive $<TARGET_FILE:zepbmp_static>)
else()
    zepbmp_check_symbols(map map ${zepbmp_map})
    zepbmp_check_symbols(shared_library so $<TARGET_FILE:zepbmp>)
    zepbmp_check_symbols(archive archive $<TARGET_FILE:zepbmp_static>)
    add_test(NAME check.instructions_self_test
        COMMAND ${Python3_EXECUTABLE} ${checks}/check_objects.py --self-test --assembler as --objdump ${objdump}
                --nm ${nm})
endif()

include(consumer/consumer)
include(abi/abi)
if(WIN32)
    include(checks/windows/windows)
endif()
