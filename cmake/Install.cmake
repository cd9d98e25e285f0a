# Installation: headers, libraries, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

set(QV_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QVFoundation)
install(TARGETS QVFoundationStatic EXPORT QVFoundationTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(QV_SHARED)
  install(TARGETS QVFoundation EXPORT QVFoundationTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(DIRECTORY include/QVFoundation DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT QVFoundationTargets NAMESPACE QVFoundation:: DESTINATION ${QV_CMAKE_DIR})

configure_package_config_file(cmake/QVFoundationConfig.cmake.in ${PROJECT_BINARY_DIR}/QVFoundationConfig.cmake
                              INSTALL_DESTINATION ${QV_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QVFoundationConfigVersion.cmake COMPATIBILITY SameMajorVersion)
# The pkg-config file finds the installation from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH QV_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/QVFoundation.pc.in ${PROJECT_BINARY_DIR}/QVFoundation.pc @ONLY)

install(FILES ${PROJECT_BINARY_DIR}/QVFoundationConfig.cmake ${PROJECT_BINARY_DIR}/QVFoundationConfigVersion.cmake
        DESTINATION ${QV_CMAKE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/QVFoundation.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
