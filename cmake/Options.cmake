# What the user may choose, and the compiler settings every target shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

option(QV_SHARED "Build libQVFoundation as a shared library" ON)
option(QV_LTO "Optimise across files when linking the shared library" OFF)
option(QV_WERROR "Treat warnings as errors" OFF)
option(QV_BUILD_TOOLS "Build qvtool (needs CLI11)" ${BUILD_TESTING})
option(QV_BUILD_BENCH "Build the benchmarks (needs the peers that ./dev bench installs)" OFF)
option(QV_BUILD_FUZZ "Build the fuzz targets (needs clang)" OFF)
set(QV_SANITIZE "" CACHE STRING "Sanitizers for every target, such as address,undefined")

# Compilation results are shared between build folders where ccache is installed.
find_program(QV_CCACHE ccache)
if(QV_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
      CCACHE_SLOPPINESS=pch_defines,time_macros ${QV_CCACHE})
endif()

add_library(qv_build_settings INTERFACE)
target_compile_options(qv_build_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  $<$<BOOL:${QV_WERROR}>:-Werror>)
# g++ 12 sees overlapping copies in the standard library's string concatenation where there are none.
target_compile_options(qv_build_settings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
# Files beyond 2 GiB and times beyond 2038 on 32-bit systems as well.
target_compile_definitions(qv_build_settings INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86")
  # Floating-point results must not depend on the 80-bit registers.
  target_compile_options(qv_build_settings INTERFACE -msse2 -mfpmath=sse)
endif()
if(QV_SANITIZE)
  add_compile_options(-fsanitize=${QV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QV_SANITIZE})
endif()

# Adds a room's files, named relative to its folder, to the library.
function(qv_room_sources)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  set_property(GLOBAL APPEND PROPERTY QV_SOURCES ${ARGN})
endfunction()
