# Configures the project where Qt cannot be found, and holds what is built then against what is built here: all but the
# desktop, and nothing of it needs a file that would not be made.
#   cmake -D BUILD=... -D SOURCE=... -D WORK=... -D COMPILER=... (see CMakeLists.txt) -P WithoutQtTest.cmake

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

# The programs that a build folder makes.
function(programs_of folder variable)
  run(ninja -C ${folder} -t targets all)
  string(REGEX MATCHALL "[^\n]+: CXX_EXECUTABLE_LINKER[^\n]*" lines "${output}")
  set(programs "")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE ":.*" "" program "${line}")
    list(APPEND programs ${program})
  endforeach()
  list(FILTER programs EXCLUDE REGEX "_tests.cmake$")  # what a test program leaves behind beside itself
  set(${variable} ${programs} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B ${WORK} -D CMAKE_BUILD_TYPE=Release -D CMAKE_CXX_COMPILER=${COMPILER}
    -D CMAKE_DISABLE_FIND_PACKAGE_Qt6=ON)
programs_of(${BUILD} here)
programs_of(${WORK} without)
list(FILTER here EXCLUDE REGEX "desktop|window_bench")
list(SORT here)
list(SORT without)
expect(without "${here}")
if(NOT "tallybook/cli/tallybook" IN_LIST without OR NOT "tests/dialogs/dialogs_test" IN_LIST without)
  message(FATAL_ERROR "the command or the tests are missing: ${without}")
endif()
run(ninja -C ${WORK} -n)
file(REMOVE_RECURSE ${WORK})
