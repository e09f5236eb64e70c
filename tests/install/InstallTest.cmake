# Installs the build into an empty prefix, moves that tree elsewhere, and builds and runs the consumer from there both
# ways. Every step that fails ends the test with what the step printed.
#   cmake -D BUILD=... -D CONSUMER=... -D WORK=... (see CMakeLists.txt) -P InstallTest.cmake

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

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
