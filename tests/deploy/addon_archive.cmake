# Packs the archive, unpacks it, and compares its content with the installed files.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/compare.cmake")

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
execute_process(
    COMMAND "${CPACK}" --config "${BUILD_DIR}/CPackConfig.cmake" -C "${CONFIG}" -B "${WORK_DIR}"
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
file(REMOVE_RECURSE "${WORK_DIR}/_CPack_Packages")
file(GLOB archive "${WORK_DIR}/*.tar.gz")
cmake_path(GET archive STEM LAST_ONLY name)
cmake_path(GET name STEM LAST_ONLY name)
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${WORK_DIR}")

set(unpacked "${WORK_DIR}/${name}")
file(GLOB_RECURSE in_archive RELATIVE "${unpacked}" "${unpacked}/*")
file(GLOB_RECURSE installed RELATIVE "${PREFIX}" "${PREFIX}/*")
compare_lists("The files of ${archive} are" EXPECTED installed ACTUAL in_archive
    REMEDY "They are to be those of cmake --install")
# The manifest has the checksums of all files of the add-on directory.
set(manifest addons/webview/manifest.json)
execute_process(
    COMMAND "${CMAKE_COMMAND}" -E compare_files "${unpacked}/${manifest}" "${PREFIX}/${manifest}"
    COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE "${WORK_DIR}")
