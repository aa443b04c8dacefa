# Runs an example and compares its picture with digests.txt.
#   cmake -D COMMAND=... -D PICTURE=... -D NAME=... -P check_picture.cmake
file(REMOVE ${PICTURE})
execute_process(COMMAND ${COMMAND} ${PICTURE} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "the example ended with ${status}")
endif()
file(SHA256 ${PICTURE} digest)
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/digests.txt known REGEX "^${NAME} ")
if(NOT known STREQUAL "${NAME} ${digest}")
    message(FATAL_ERROR "${PICTURE} is not the picture that digests.txt knows; its line would be:\n${NAME} ${digest}")
endif()
