# Installs the build into an empty prefix, moves that tree elsewhere, builds and runs the consumer from there both ways,
# and runs the command. Every step that fails ends the test with what the step printed.
#   cmake -D BUILD=... -D CONSUMER=... -D WORK=... (see CMakeLists.txt) -P InstallTest.cmake

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

set(flags "")
if(SANITIZE)
  # A sanitized library asks for a sanitized program.
  set(flags -fsanitize=address,undefined)
endif()
# What consumer/main.cpp prints when every floor that it links answered.
set(answer "999 definitions at most; without a database: failure 91")

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first --component Development)
# What was installed may be moved: nothing in it may name the place of its birth.
file(RENAME ${WORK}/first ${WORK}/moved)

# find_package
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER} -B ${WORK}/by-cmake
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${WORK}/moved -D CMAKE_CXX_FLAGS=${flags}
    -D TALLYBOOK_VERSION=${VERSION})
run(${CMAKE_COMMAND} --build ${WORK}/by-cmake)
run(${WORK}/by-cmake/consumer)
expect(output "${answer}")

# pkg-config
set(ENV{PKG_CONFIG_PATH} ${WORK}/moved/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --modversion tallybook)
expect(output "${VERSION}")
run(${PKG_CONFIG} --cflags tallybook)
separate_arguments(compile_flags UNIX_COMMAND "${output}")
run(${PKG_CONFIG} --libs tallybook)
separate_arguments(link_flags UNIX_COMMAND "${output}")
run(${COMPILER} -std=c++20 ${flags} ${compile_flags} ${CONSUMER}/main.cpp -o ${WORK}/by-pkg-config ${link_flags})
run(${WORK}/by-pkg-config)
expect(output "${answer}")

# The command, with the module that makes PDF documents: it is found from the command's own place.
if(APPLICATION)
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first --component Runtime)
  file(RENAME ${WORK}/first ${WORK}/moved-command)
  set(tallybook ${WORK}/moved-command/${BINDIR}/tallybook)
  set(ENV{LSAN_OPTIONS} suppressions=${LEAKS}:print_suppressions=0)
  run(${tallybook} demo ${WORK}/demo)
  run(${tallybook} import qdx ${WORK}/demo/head-office --definition 1 --yes --report ${WORK}/demo/report.pdf)
  file(READ ${WORK}/demo/report.pdf signature LIMIT 5)
  expect(signature "%PDF-")
  # Without the module nothing is begun.
  file(REMOVE_RECURSE ${WORK}/moved-command/${LIBDIR}/tallybook)
  execute_process(
    COMMAND ${tallybook} import qdx ${WORK}/demo/head-office --definition 1 --yes --report ${WORK}/demo/other.pdf
    RESULT_VARIABLE status ERROR_VARIABLE output)
  if(NOT status EQUAL 1 OR NOT output MATCHES "^tallybook: Reports cannot be made as PDF: ")
    message(FATAL_ERROR "without the module: status ${status}, ${output}")
  endif()
endif()
