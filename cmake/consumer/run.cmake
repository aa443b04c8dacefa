# What the tests that use the library from outside share.
#
# start()
#   Sets what consumer.cmake has written down of the build (cmake -D NAME=test -D SETTINGS=file -P test_NAME.cmake),
#   empties $WORK, the test's folder, and lets programs find the shared library in $PREFIX, the installed tree.
# run(COMMAND command... [FOLDER folder] [OUTPUT variable])
#   Runs a command in a folder, $WORK if none is named, and shows what it prints. Its failure ends the script.
# run_programs(count pattern...)
#   Runs the programs that match; as many as are expected.

macro(start)
    include(${SETTINGS})
    file(REMOVE_RECURSE ${WORK})
    file(MAKE_DIRECTORY ${WORK})
    # Windows looks for DLLs beside the program and on PATH, which is WINEPATH for Wine.
    set(ENV{LD_LIBRARY_PATH} ${PREFIX}/lib)
    set(ENV{WINEPATH} Z:${PREFIX}/bin)
endmacro()

function(run)
    cmake_parse_arguments(PARSE_ARGV 0 run "" "FOLDER;OUTPUT" "COMMAND")
    if(NOT run_FOLDER)
        set(run_FOLDER ${WORK})
    endif()
    execute_process(COMMAND ${run_COMMAND} WORKING_DIRECTORY ${run_FOLDER} RESULT_VARIABLE status
        OUTPUT_VARIABLE text ERROR_VARIABLE errors OUTPUT_STRIP_TRAILING_WHITESPACE)
    list(JOIN run_COMMAND " " command)
    message("$ ${command}\n${text}${errors}")
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "ended with ${status}")
    endif()
    if(run_OUTPUT)
        set(${run_OUTPUT} "${text}" PARENT_SCOPE)
    endif()
endfunction()

function(run_programs count)
    set(programs)
    foreach(pattern IN LISTS ARGN)
        file(GLOB found ${pattern})
        list(APPEND programs ${found})
    endforeach()
    list(LENGTH programs found)
    if(NOT found EQUAL count)
        message(FATAL_ERROR "expected ${count} programs, found: ${programs}")
    endif()
    foreach(program IN LISTS programs)
        run(COMMAND ${EMULATOR} ${program})
    endforeach()
endfunction()
