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

file(GENERATE OUTPUT objects.txt CONTENT "$<JOIN:$<TARGET_OBJECTS:zepbmp_objects>,\n>\n")
add_test(NAME check.instructions
    COMMAND ${Python3_EXECUTABLE} ${checks}/check_objects.py --bits ${bits} --objdump ${objdump} --nm ${nm}
            ${PROJECT_BINARY_DIR}/objects.txt)

function(zepbmp_check_symbols name)
    add_test(NAME check.${name} COMMAND ${Python3_EXECUTABLE} ${checks}/check_symbols.py --header ${header}
        --nm ${nm} --objdump ${objdump} ${ARGN})
endfunction()

if(WIN32)
    zepbmp_check_symbols(def def ${zepbmp_def})
    zepbmp_check_symbols(dll dll $<TARGET_FILE:zepbmp>)
    zepbmp_check_symbols(import_library implib $<TARGET_LINKER_FILE:zepbmp>)
    zepbmp_check_symbols(import_library_msvc implib ${ZEPBMP_MSVC_IMPORT_LIBRARY})
    zepbmp_check_symbols(archive --windows archive $<TARGET_FILE:zepbmp_static>)
else()
    zepbmp_check_symbols(shared_library so $<TARGET_FILE:zepbmp>)
    zepbmp_check_symbols(archive archive $<TARGET_FILE:zepbmp_static>)
    add_test(NAME check.instructions_self_test
        COMMAND ${Python3_EXECUTABLE} ${checks}/check_objects.py --self-test --assembler as --objdump ${objdump}
                --nm ${nm})
endif()

set(consumer ${PROJECT_SOURCE_DIR}/cmake/consumer)
if(CMAKE_TOOLCHAIN_FILE)
    set(how -D TOOLCHAIN=${CMAKE_TOOLCHAIN_FILE})
else()
    set(how -D "CONFIGURE=-DCMAKE_C_COMPILER=${CMAKE_C_COMPILER}\;-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}")
endif()
if(WIN32)
    list(APPEND how -D EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR} -D LLD_LINK=${ZEPBMP_LLD_LINK})
endif()
add_test(NAME check.package COMMAND ${CMAKE_COMMAND} -D BUILD=${PROJECT_BINARY_DIR} -D SOURCE=${consumer}
    -D WORK=${PROJECT_BINARY_DIR}/consumer -D C_COMPILER=${CMAKE_C_COMPILER} -D C_FLAGS=${CMAKE_C_FLAGS} ${how}
    -P ${consumer}/test_package.cmake)

if(WIN32)
    include(checks/windows/windows)
endif()
