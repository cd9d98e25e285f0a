# The library from the rooms' sources: a static archive that the tests link, and the shared library that ships.

find_package(Threads REQUIRED)

# The version script is made from the one checked-in list of exported names.
file(STRINGS ${PROJECT_SOURCE_DIR}/src/exports.txt QV_EXPORTS REGEX "^QV")
list(JOIN QV_EXPORTS ";\n    " QV_EXPORT_LINES)
set(QV_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/QVFoundation.map)
file(CONFIGURE OUTPUT ${QV_VERSION_SCRIPT} @ONLY
     CONTENT "QVFOUNDATION_1.0 {\n  global:\n    @QV_EXPORT_LINES@;\n  local:\n    *;\n};\n")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/exports.txt)

function(qv_configure_library target)
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  # Short functions that straddle 64 bytes of code take up to a seventh longer; what stands before them must not decide.
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-falign-functions=32>)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:qv_build_settings> Threads::Threads)
endfunction()

get_property(QV_SOURCES GLOBAL PROPERTY QV_SOURCES)

add_library(QVFoundationStatic STATIC ${QV_SOURCES})
add_library(QVFoundation::QVFoundationStatic ALIAS QVFoundationStatic)
qv_configure_library(QVFoundationStatic)
set_target_properties(QVFoundationStatic PROPERTIES OUTPUT_NAME QVFoundation)

if(QV_SHARED)
  if(QV_LTO)
    add_library(QVFoundation SHARED ${QV_SOURCES})
    set_target_properties(QVFoundation PROPERTIES INTERPROCEDURAL_OPTIMIZATION ON)
  else()
    add_library(QVFoundation SHARED $<TARGET_OBJECTS:QVFoundationStatic>)
    set_target_properties(QVFoundation PROPERTIES LINKER_LANGUAGE CXX)
  endif()
  qv_configure_library(QVFoundation)
  set_target_properties(QVFoundation PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                        LINK_DEPENDS ${QV_VERSION_SCRIPT})
  # Our own calls bind to our own functions, so that crossing a room costs no more than a call.
  target_link_options(QVFoundation PRIVATE -Wl,--version-script=${QV_VERSION_SCRIPT} -Wl,-Bsymbolic-functions)
  if(NOT QV_SANITIZE)
    target_link_options(QVFoundation PRIVATE -Wl,-z,defs)
  endif()
  set(QV_MAIN_TARGET QVFoundation)
else()
  set(QV_MAIN_TARGET QVFoundationStatic)
endif()
add_library(QVFoundation::QVFoundation ALIAS ${QV_MAIN_TARGET})
