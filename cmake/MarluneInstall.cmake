# Installs two components: "addon", the add-on directory of a game, and "development", the headers and a
# CMake package for find_package(marlune).
include(CMakePackageConfigHelpers)

set(marlune_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/marlune")

install(TARGETS marlune EXPORT marlune_targets
    LIBRARY DESTINATION "${marlune_library_dir}" COMPONENT addon
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT addon
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
install(EXPORT marlune_targets NAMESPACE marlune:: DESTINATION "${marlune_package_dir}"
    FILE marlune-targets.cmake COMPONENT development)

configure_package_config_file(cmake/marlune-config.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/marlune-config.cmake" INSTALL_DESTINATION "${marlune_package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/marlune-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/marlune-config.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/marlune-config-version.cmake"
    DESTINATION "${marlune_package_dir}" COMPONENT development)

if(MARLUNE_INSTALL_QT)
    marlune_install_addon()
endif()

# cpack in the build folder makes one archive of both.
set(CPACK_GENERATOR TGZ)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
endif()
set(CPACK_PACKAGE_FILE_NAME "marlune-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
