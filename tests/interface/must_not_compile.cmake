# Compiles SOURCE twice: as it is, which must succeed, and with MISUSE defined, which must fail with
# the message that the source's line "// Refused with: …" gives as a regular expression.

file(STRINGS ${SOURCE} expectation REGEX "^// Refused with: ")
string(REPLACE "// Refused with: " "" expectation "${expectation}")
if(NOT expectation)
    message(FATAL_ERROR "${SOURCE} does not say with which message it is refused")
endif()

set(command ${COMPILER} -std=c++20 -fsyntax-only -I${INCLUDE_DIRECTORY})
execute_process(COMMAND ${command} ${SOURCE} RESULT_VARIABLE status ERROR_VARIABLE messages)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "The proper use does not compile:\n${messages}")
endif()

execute_process(COMMAND ${command} -DMISUSE ${SOURCE} RESULT_VARIABLE status ERROR_VARIABLE messages)
if(status EQUAL 0)
    message(FATAL_ERROR "The misuse compiles.")
elseif(NOT messages MATCHES "${expectation}")
    message(FATAL_ERROR "The misuse is refused, but not with '${expectation}':\n${messages}")
endif()
