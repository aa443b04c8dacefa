# Links a program without a C runtime by a Microsoft-style linker and zepbmp.lib, and runs it.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)
start()
if(BITS EQUAL 32)
    set(entry start@0)
else()
    set(entry start)
endif()
run(COMMAND ${C_COMPILER} ${C_FLAGS} -I${PREFIX}/include -c ${SOURCE}/cmake/consumer/host_without_runtime.c -o host.obj)
run(COMMAND ${C_COMPILER} -print-file-name=libkernel32.a OUTPUT kernel32)
run(COMMAND ${LLD_LINK} /nologo ${LLD_OPTIONS} /subsystem:console /entry:${entry} /nodefaultlib
            host.obj ${PREFIX}/lib/zepbmp.lib ${kernel32} /out:host.exe)
run_programs(1 ${WORK}/host.exe)
