# zepbmp_add_test(name source... [SHARED] [NATIVE_ONLY] [LIBRARIES lib...] [TIMEOUT seconds])
#
# A GoogleTest program, registered with ctest as one test. It links the static library, which gives it the internals, or
# with SHARED the shared one. It runs in the build folder and leaves its results in results/<test>.xml.
#   Windows       through Wine
#   32-bit Linux  on this machine, and, unless NATIVE_ONLY, on four emulated processors as <name>.<processor>. There
#                 ZEPBMP_TEST_ROUNDS asks for few random rounds and ZEPBMP_EXPECT_CPU_LEVEL tells the processor's level.

set(ZEPBMP_GOOGLETEST /usr/src/googletest CACHE PATH "GoogleTest's source tree")
if(NOT EXISTS ${ZEPBMP_GOOGLETEST}/CMakeLists.txt)
    message(FATAL_ERROR "No GoogleTest in ${ZEPBMP_GOOGLETEST}: install the package 'googletest', "
        "set ZEPBMP_GOOGLETEST, or build without tests (ZEPBMP_TESTS=OFF)")
endif()
# From source, so that it is built with each target's own flags.
set(INSTALL_GTEST OFF)
add_subdirectory(${ZEPBMP_GOOGLETEST} googletest EXCLUDE_FROM_ALL SYSTEM)
# GCC 12 warns of a string copy in it that it misunderstands.
target_compile_options(gtest PRIVATE -w)

# Processor, as QEMU names it, and the level that the library finds on it. QEMU has none that faults in SSE (level 2).
set(zepbmp_cpu_pentium2-nommx "pentium2,-mmx")
set(zepbmp_level_pentium2-nommx 0)
set(zepbmp_cpu_pentium2 "pentium2")
set(zepbmp_level_pentium2 1)
set(zepbmp_cpu_pentium3 "pentium3")
set(zepbmp_level_pentium3 3)
set(zepbmp_cpu_core2duo "core2duo")
set(zepbmp_level_core2duo 4)
set(zepbmp_processors pentium2-nommx pentium2 pentium3 core2duo)

if(ZEPBMP_32BIT AND NOT WIN32)
    find_program(ZEPBMP_QEMU qemu-i386 REQUIRED DOC "Runs the tests on old processors (package qemu-user)")
endif()

# ZEPBMP_DEBIAN_PYTHON: Debian's own Python, which Debian's modules are those of. Those named have to be there; what
# brings them, or does without them, is told.
macro(zepbmp_require_debian_python advice)
    find_program(ZEPBMP_DEBIAN_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
    foreach(module IN ITEMS ${ARGN})
        execute_process(COMMAND ${ZEPBMP_DEBIAN_PYTHON} -c "import ${module}" RESULT_VARIABLE status ERROR_QUIET)
        if(NOT status EQUAL 0)
            message(FATAL_ERROR "Python has no module '${module}': ${advice}")
        endif()
    endforeach()
endmacro()

# Of a target that holds tests, without a choice between the static and the shared library. What tests compare is
# computed elsewhere, in the library and in the model, so optimising them further costs more time than it saves.
function(zepbmp_test_flags name)
    zepbmp_project_flags(${name})
    target_compile_options(${name} PRIVATE -O1)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_definitions(${name} PRIVATE ZEPBMP_TEST_DATA_DIR="${CMAKE_CURRENT_SOURCE_DIR}" ZEPBMP_HAVE_AVX2=1
        $<$<NOT:$<BOOL:${ZEPBMP_32BIT}>>:ZEPBMP_HAVE_AVX512=1>)
endfunction()

function(zepbmp_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 test "SHARED;NATIVE_ONLY" "TIMEOUT" "LIBRARIES")
    if(NOT test_TIMEOUT)
        set(test_TIMEOUT 300)
    endif()
    if(ZEPBMP_SANITIZE)
        math(EXPR test_TIMEOUT "${test_TIMEOUT} * 4")
    endif()
    add_executable(${name} ${test_UNPARSED_ARGUMENTS})
    zepbmp_test_flags(${name})
    target_link_libraries(${name} PRIVATE
        $<IF:$<BOOL:${test_SHARED}>,zepbmp,zepbmp_static> ${test_LIBRARIES} GTest::gtest_main)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)

    # A program on Windows or under an emulator cannot be given absolute paths of this system everywhere.
    add_test(NAME ${name} WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
        COMMAND ${name} --gtest_brief=1 --gtest_output=xml:results/${name}.xml)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${test_TIMEOUT})

    if(ZEPBMP_32BIT AND NOT WIN32 AND NOT test_NATIVE_ONLY)
        foreach(processor IN LISTS zepbmp_processors)
            set(run ${name}.${processor})
            add_test(NAME ${run} WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
                COMMAND ${ZEPBMP_QEMU} -cpu ${zepbmp_cpu_${processor}} $<TARGET_FILE:${name}> --gtest_brief=1
                        --gtest_output=xml:results/${run}.xml)
            set_tests_properties(${run} PROPERTIES TIMEOUT ${test_TIMEOUT} LABELS emulated ENVIRONMENT
                "ZEPBMP_TEST_ROUNDS=2;ZEPBMP_EXPECT_CPU_LEVEL=${zepbmp_level_${processor}}")
        endforeach()
    endif()
endfunction()

if(ZEPBMP_COVERAGE)
    find_program(ZEPBMP_GCOVR gcovr REQUIRED)
    add_custom_target(coverage-report
        COMMAND ${ZEPBMP_GCOVR} --root ${PROJECT_SOURCE_DIR}
                --filter "${PROJECT_SOURCE_DIR}/(core|compose|shapes|mapping|platform|simd)/"
                --html-details coverage/index.html --txt --print-summary ${PROJECT_BINARY_DIR}
        VERBATIM WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/coverage)
endif()
