# Builds and runs a C program by what pkg-config tells of the tree in $PREFIX, with the shared and the static library.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)
start()
file(COPY ${SOURCE}/cmake/consumer/host.c DESTINATION ${WORK})

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_LIBDIR} ${PREFIX}/lib/pkgconfig)
run(COMMAND ${PKG_CONFIG} --cflags --libs zepbmp OUTPUT shared)
separate_arguments(shared UNIX_COMMAND "${shared}")
run(COMMAND ${C_COMPILER} ${C_FLAGS} host.c -o shared.exe ${shared})
run(COMMAND ${PKG_CONFIG} --static --cflags --libs zepbmp OUTPUT static)
separate_arguments(static UNIX_COMMAND "${static}")
run(COMMAND ${C_COMPILER} ${C_FLAGS} host.c -o static.exe -static ${static})
run_programs(2 ${WORK}/shared.exe ${WORK}/static.exe)
