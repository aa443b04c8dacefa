# Run by CPack on the folder that it packs: takes out what neither a linker nor a loader reads.
file(GLOB_RECURSE programs ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/* ${CPACK_TEMPORARY_DIRECTORY}/*/libzepbmp.so.*.*
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/lib/frei0r-1/zepbmp_*.so)
file(GLOB_RECURSE archives ${CPACK_TEMPORARY_DIRECTORY}/*/libzepbmp.a)
if(NOT programs OR NOT archives)
    message(FATAL_ERROR "no programs and libraries in ${CPACK_TEMPORARY_DIRECTORY}")
endif()
set(sections --remove-section=.comment --remove-section=.note)
execute_process(COMMAND strip --strip-unneeded ${sections} ${programs} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${sections} ${archives}
    COMMAND_ERROR_IS_FATAL ANY)
