# What the benchmarks are made with: benchmark::benchmark and CLI11::CLI11.
#
# Cross-compiled, Google Benchmark is built from its source in ZEPBMP_BENCHMARK, with the target's own flags; scripts/bench
# fetches it. CLI11 is headers only: the compiler gets them through a folder of their own, never this system's /usr/include.

if(NOT CMAKE_CROSSCOMPILING)
    find_package(benchmark CONFIG REQUIRED)
    find_package(CLI11 CONFIG REQUIRED)
    return()
endif()

set(ZEPBMP_BENCHMARK "" CACHE PATH "Google Benchmark's source tree")
if(NOT EXISTS ${ZEPBMP_BENCHMARK}/include/benchmark/benchmark.h)
    message(FATAL_ERROR "No Google Benchmark in '${ZEPBMP_BENCHMARK}': run scripts/bench, which fetches its source, "
        "or set ZEPBMP_BENCHMARK to it")
endif()
set(BENCHMARK_ENABLE_TESTING OFF)
set(BENCHMARK_ENABLE_INSTALL OFF)
set(BENCHMARK_ENABLE_WERROR OFF)
# Debian's source asks for its own version.
file(STRINGS ${ZEPBMP_BENCHMARK}/CMakeLists.txt GIT_VERSION REGEX "^project *\\(benchmark VERSION")
string(REGEX MATCH "[0-9.]+" GIT_VERSION "${GIT_VERSION}")
add_subdirectory(${ZEPBMP_BENCHMARK} google-benchmark EXCLUDE_FROM_ALL SYSTEM)
target_compile_options(benchmark PRIVATE -w)

find_path(ZEPBMP_CLI11_FOLDER CLI/CLI.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH
    DOC "The folder with CLI11's headers (package libcli11-dev)")
if(NOT ZEPBMP_CLI11_FOLDER)
    message(FATAL_ERROR "The benchmarks need CLI11's headers (package libcli11-dev), or ZEPBMP_BENCH=OFF")
endif()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/cli11)
file(CREATE_LINK ${ZEPBMP_CLI11_FOLDER}/CLI ${PROJECT_BINARY_DIR}/cli11/CLI SYMBOLIC)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
target_include_directories(CLI11::CLI11 SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/cli11)
