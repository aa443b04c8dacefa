# Installs the build into a folder of its own and uses it as a stranger would: through the CMake package, through
# pkg-config, and on Windows through the import library for Microsoft-style linkers. Any failure ends it.
#   cmake -D BUILD=... -D SOURCE=... -D WORK=... -D C_COMPILER=... -D C_FLAGS=... [-D TOOLCHAIN=...] [-D CONFIGURE=...]
#         [-D EMULATOR=...] [-D LLD_LINK=...] -P test_package.cmake

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
run(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

# Windows looks for DLLs beside the program and on PATH, which is WINEPATH for Wine.
set(ENV{LD_LIBRARY_PATH} ${prefix}/lib)
set(ENV{WINEPATH} Z:${prefix}/bin)

set(options -DCMAKE_PREFIX_PATH=${prefix} ${CONFIGURE})
if(TOOLCHAIN)
    list(APPEND options -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()
run(COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B ${WORK}/cmake ${options})
run(COMMAND ${CMAKE_COMMAND} --build ${WORK}/cmake)
file(GLOB programs ${WORK}/cmake/shared_c* ${WORK}/cmake/static_c* ${WORK}/cmake/shared_cpp*)
list(LENGTH programs count)
if(NOT count EQUAL 3)
    message(FATAL_ERROR "expected three programs, found: ${programs}")
endif()
foreach(program IN LISTS programs)
    run(COMMAND ${EMULATOR} ${program})
endforeach()

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_LIBDIR} ${prefix}/lib/pkgconfig)
run(COMMAND ${PKG_CONFIG} --cflags --libs zepbmp OUTPUT flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
separate_arguments(C_FLAGS UNIX_COMMAND "${C_FLAGS}")
run(COMMAND ${C_COMPILER} ${C_FLAGS} ${SOURCE}/host.c -o pkgconfig.exe ${flags})
run(COMMAND ${EMULATOR} ${WORK}/pkgconfig.exe)

if(LLD_LINK)
    run(COMMAND ${C_COMPILER} ${C_FLAGS} -I${prefix}/include -c ${SOURCE}/host_without_runtime.c -o host.obj)
    run(COMMAND ${C_COMPILER} -print-file-name=libkernel32.a OUTPUT kernel32)
    run(COMMAND ${LLD_LINK} /nologo /machine:x86 /subsystem:console /entry:start@0 /safeseh:no /nodefaultlib
                host.obj ${prefix}/lib/zepbmp.lib ${kernel32} /out:lld.exe)
    run(COMMAND ${EMULATOR} ${WORK}/lld.exe)
endif()
