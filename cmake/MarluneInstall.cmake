# The library, its headers and a CMake package, so that find_package(marlune) is all a host needs.
include(CMakePackageConfigHelpers)

set(marlune_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/marlune")

install(TARGETS marlune EXPORT marlune_targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT marlune_targets NAMESPACE marlune:: DESTINATION "${marlune_package_dir}"
    FILE marlune-targets.cmake)

configure_package_config_file(cmake/marlune-config.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/marlune-config.cmake" INSTALL_DESTINATION "${marlune_package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/marlune-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/marlune-config.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/marlune-config-version.cmake"
    DESTINATION "${marlune_package_dir}")
