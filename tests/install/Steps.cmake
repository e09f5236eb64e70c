# The steps of the tests of what is installed.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " line)
    message(FATAL_ERROR "status ${status} of: ${line}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# expect(VARIABLE TEXT): the text in the variable is TEXT, surrounding blanks aside.
function(expect variable text)
  string(STRIP "${${variable}}" found)
  if(NOT found STREQUAL text)
    message(FATAL_ERROR "expected '${text}', found '${found}'")
  endif()
endfunction()
