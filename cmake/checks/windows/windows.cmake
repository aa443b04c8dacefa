# Tests of zepbmp.dll as a file and towards the loader, and of the zip that is made of it.
zepbmp_require_debian_python("install the package 'python3-pefile', which reads Windows programs, or build without tests \
(ZEPBMP_TESTS=OFF)"
    pefile)
set(here ${checks}/windows)

set(check_dll ${ZEPBMP_DEBIAN_PYTHON} ${checks}/check_dll.py --bits ${bits} --header ${header} --def ${zepbmp_def}
    $<TARGET_FILE:zepbmp>)
add_test(NAME check.dll_file COMMAND ${check_dll})
add_test(NAME check.dll_file_self_test COMMAND ${check_dll} --self-test)
set(check_linked ${check_objects} --linked $<TARGET_FILE:zepbmp> ${zepbmp_linker_map})
add_test(NAME check.dll_instructions COMMAND ${check_linked})
add_test(NAME check.dll_instructions_self_test COMMAND ${check_linked} --self-test)

# Loading and unloading.
add_executable(loading_host ${here}/loading_host.c)
zepbmp_project_flags(loading_host)
target_include_directories(loading_host PRIVATE ${PROJECT_SOURCE_DIR}/include)
add_dependencies(loading_host zepbmp)
add_test(NAME check.dll_loading COMMAND loading_host WORKING_DIRECTORY ${PROJECT_BINARY_DIR})

# The zip.
add_test(NAME check.zip COMMAND ${CMAKE_COMMAND} -D BUILD=${PROJECT_BINARY_DIR} -D SOURCE=${PROJECT_SOURCE_DIR}
    -D WORK=${PROJECT_BINARY_DIR}/zip_test -D NAME=${ZEPBMP_ZIP_NAME} -D BITS=${bits} -D C_COMPILER=${CMAKE_C_COMPILER}
    -D DLLTOOL=${CMAKE_DLLTOOL} -D LLD_LINK=${ZEPBMP_LLD_LINK} -D PYTHON=${Python3_EXECUTABLE}
    -D EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR} -P ${PROJECT_SOURCE_DIR}/cmake/consumer/test_zip.cmake)

if(NOT ZEPBMP_32BIT)
    return()
endif()

# On old processors. Host and stand-ins are baseline code without a C runtime.
find_program(ZEPBMP_QEMU qemu-i386 REQUIRED DOC "Runs the DLL on old processors (package qemu-user)")
set(processors ${PROJECT_BINARY_DIR}/processors)
add_executable(processor_host ${here}/processor_host.c)
add_library(msvcrt_stand_in SHARED ${here}/stand_ins.c)
add_library(gdi32_stand_in SHARED ${here}/stand_ins.c)
foreach(target IN ITEMS processor_host msvcrt_stand_in gdi32_stand_in)
    zepbmp_project_flags(${target})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/include)
    target_compile_options(${target} PRIVATE -fno-builtin)
    target_link_options(${target} PRIVATE -nostdlib LINKER:--kill-at)
    set_target_properties(${target} PROPERTIES PREFIX "" C_EXTENSIONS ON
        RUNTIME_OUTPUT_DIRECTORY ${processors} ARCHIVE_OUTPUT_DIRECTORY ${processors})
endforeach()
target_link_options(processor_host PRIVATE LINKER:--entry=_start@0)
foreach(name IN ITEMS msvcrt gdi32)
    target_compile_definitions(${name}_stand_in PRIVATE _GDI32_)
    target_link_options(${name}_stand_in PRIVATE LINKER:--entry=_start@12)
    set_target_properties(${name}_stand_in PROPERTIES OUTPUT_NAME ${name})
endforeach()
add_test(NAME check.dll_processors COMMAND ${here}/check_processors ${ZEPBMP_QEMU} ${PROJECT_SOURCE_DIR}/scripts/lib
    $<TARGET_FILE:zepbmp> ${processors})
set_tests_properties(check.dll_processors PROPERTIES TIMEOUT 300)
