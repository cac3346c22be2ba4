# Creates the add-on directory around the installed library. Run by cmake --install, with the settings of
# MarluneAddon.cmake.
cmake_minimum_required(VERSION 3.25)
include("${SOURCE_DIR}/cmake/addon/files.cmake")
include("${SOURCE_DIR}/cmake/addon/libraries.cmake")
include("${SOURCE_DIR}/cmake/addon/licenses.cmake")
include("${SOURCE_DIR}/cmake/addon/manifest.cmake")

set(ADDON "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/addons/webview")
cmake_path(ABSOLUTE_PATH ADDON NORMALIZE)
message(STATUS "Laying out ${ADDON}")

# Left-over files of an earlier run would be shipped too.
foreach(folder IN ITEMS lib licenses plugins qml resources translations)
    file(REMOVE_RECURSE "${ADDON}/${folder}")
endforeach()

addon_take_programs_and_data()
addon_take_qml_modules()
addon_take_libraries()
addon_set_run_paths()
addon_write_licenses()
addon_write_manifest()
