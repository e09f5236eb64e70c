# A folder is a floor and a floor is a library target. Every floor compiles with the same language level and the same
# warnings, and links only what lies below it, so that an include that climbs fails in the build.

find_program(TALLYBOOK_CCACHE ccache)
if(TALLYBOOK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # What ccache must overlook to keep objects that were made with the tests' precompiled header; and paths below the
  # checkout count from there, so that another checkout finds the objects too.
  set(CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}
      CCACHE_NOHASHDIR=1 ${TALLYBOOK_CCACHE})
endif()
# Tests name their source in what they say; from the checkout on, so that an object is the same in every checkout.
add_compile_options(-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)

add_library(tallybook_build_options INTERFACE)
target_compile_features(tallybook_build_options INTERFACE cxx_std_20)
target_compile_options(tallybook_build_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -Wcast-align -Wunused -Wnull-dereference -Wformat=2 -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports these inside the standard library's own headers when it optimises (its bugs 105329, 105562, 105651).
  target_compile_options(tallybook_build_options INTERFACE -Wno-restrict -Wno-null-dereference -Wno-maybe-uninitialized
                                                     -Wno-stringop-overflow)
  if(CMAKE_UNITY_BUILD)
    # It takes a source that is compiled together with others for a header, which may not have types of its own.
    target_compile_options(tallybook_build_options INTERFACE -Wno-subobject-linkage)
  endif()
endif()
if(TALLYBOOK_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # The sanitizer loads modules in the program's stead, and then only the older kind of run path is heeded.
  add_link_options(LINKER:--disable-new-dtags)
endif()
if(TALLYBOOK_BUILD_FUZZERS)
  # The floors under a fuzz target report their coverage to it; the target itself links with -fsanitize=fuzzer.
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "TALLYBOOK_BUILD_FUZZERS needs clang, found ${CMAKE_CXX_COMPILER_ID}: cmake --preset fuzzing")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Where sources are compiled several at a time (CMAKE_UNITY_BUILD), the headers that they share are read once, which is
# most of the work. They then also share what each has in a namespace without a name. The names below stand in many
# sources, each with a value of its own, and are told apart here; a source whose other names clash is compiled alone.
set(CMAKE_UNITY_BUILD_UNIQUE_ID TALLYBOOK_SOURCE_ID)
string(JOIN "\n" TALLYBOOK_NAMES_OF_EACH_SOURCE
  "#define TALLYBOOK_JOIN(a, b) a##_##b"
  "#define TALLYBOOK_JOINED(a, b) TALLYBOOK_JOIN(a, b)"
  "#define kForm TALLYBOOK_JOINED(kForm, TALLYBOOK_SOURCE_ID)"
  "#define kPath TALLYBOOK_JOINED(kPath, TALLYBOOK_SOURCE_ID)"
  "#define kSource TALLYBOOK_JOINED(kSource, TALLYBOOK_SOURCE_ID)")

# tallybook_tell_names_apart(TARGETS...): targets whose sources may be compiled several at a time.
function(tallybook_tell_names_apart)
  set_target_properties(${ARGN} PROPERTIES UNITY_BUILD_CODE_BEFORE_INCLUDE "${TALLYBOOK_NAMES_OF_EACH_SOURCE}")
endfunction()

# tallybook_compile_alone(SOURCES...): sources of this folder that cannot be compiled together with others.
function(tallybook_compile_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# tallybook_floor(NAME SOURCES ... [LINKS ...])
# A static library of one folder. LINKS are the floors below it and the libraries it uses, handed on to who links it.
function(tallybook_floor name)
  cmake_parse_arguments(FLOOR "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${FLOOR_SOURCES})
  target_link_libraries(${name} PUBLIC ${FLOOR_LINKS} PRIVATE $<BUILD_INTERFACE:tallybook_build_options>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  tallybook_tell_names_apart(${name})
endfunction()

# For the folders that follow in this list: they move no figures by the million, and optimising the sanitizers' checks in
# them takes longer than the tests gain.
macro(tallybook_compile_fast_under_sanitizers)
  if(TALLYBOOK_SANITIZE)
    add_compile_options(-O0)
  endif()
endmacro()

# Modules lie in one folder, where every program of the build looks for them.
set(TALLYBOOK_MODULES ${PROJECT_BINARY_DIR}/modules)
set(CMAKE_BUILD_RPATH ${TALLYBOOK_MODULES})

# tallybook_module(NAME SOURCES ... LINKS ...)
# A library that a program loads while it runs. It has its own copy of the floors it links, and shows the program nothing
# but what it marks.
function(tallybook_module name)
  cmake_parse_arguments(MODULE "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} MODULE ${MODULE_SOURCES})
  target_link_libraries(${name} PRIVATE ${MODULE_LINKS} tallybook_build_options)
  target_link_options(${name} PRIVATE LINKER:--exclude-libs,ALL)
  set_target_properties(${name} PROPERTIES
    PREFIX "" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${TALLYBOOK_MODULES})
endfunction()
