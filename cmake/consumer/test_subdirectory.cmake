# Builds, tests and installs the project in subdirectory/, which takes in the source tree.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)
start()
set(consumer ${SOURCE}/cmake/consumer)
file(COPY ${consumer}/subdirectory/CMakeLists.txt ${consumer}/host.c ${consumer}/host.cpp DESTINATION ${WORK})
run(COMMAND ${CMAKE_COMMAND} -G Ninja -S . -B build -DCMAKE_BUILD_TYPE=Debug
            -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DZEPBMP_SOURCE=${SOURCE} ${CONFIGURE})
run(COMMAND ${CMAKE_COMMAND} --build build --parallel 2)
run_programs(2 ${WORK}/build/shared_cpp ${WORK}/build/static_cpp)

run(COMMAND ${CMAKE_CTEST_COMMAND} --test-dir build --show-only OUTPUT tests)
if(NOT tests MATCHES "Total Tests: 2$")
    message(FATAL_ERROR "the library's tests are in the project")
endif()
run(COMMAND ${CMAKE_COMMAND} --install build --prefix ${WORK}/prefix)
file(GLOB_RECURSE files RELATIVE ${WORK}/prefix ${WORK}/prefix/*)
if(NOT files STREQUAL "bin/shared_cpp")
    message(FATAL_ERROR "the project installs: ${files}")
endif()
