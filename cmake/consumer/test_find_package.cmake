# Builds and runs the project in find_package/ with the tree in $PREFIX.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)
start()
set(consumer ${SOURCE}/cmake/consumer)
file(COPY ${consumer}/find_package/CMakeLists.txt ${consumer}/host.c ${consumer}/host.cpp DESTINATION ${WORK})
run(COMMAND ${CMAKE_COMMAND} -G Ninja -S . -B build -DCMAKE_PREFIX_PATH=${PREFIX} ${CONFIGURE})
run(COMMAND ${CMAKE_COMMAND} --build build)
run_programs(3 ${WORK}/build/shared_cpp* ${WORK}/build/static_c*)
