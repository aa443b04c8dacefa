# run(COMMAND command... [FOLDER folder] [OUTPUT variable])
#
# Runs a command in a folder, $WORK if none is named, and shows what it prints. Its failure ends the script.

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
