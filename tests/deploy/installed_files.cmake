# Checks that an installation holds the headers, the library and the CMake package, and nothing else but
# an add-on directory, which has tests of its own.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/compare.cmake")

file(GLOB headers RELATIVE "${INCLUDE_DIR}" "${INCLUDE_DIR}/marlune/*.h")
list(TRANSFORM headers PREPEND "${INSTALL_INCLUDEDIR}/")
string(TOLOWER "${CONFIG}" config)
set(package "${INSTALL_LIBDIR}/cmake/marlune")
set(expected
    ${headers}
    "${LIBRARY_DIR}/libmarlune.so"
    "${package}/marlune-config.cmake"
    "${package}/marlune-config-version.cmake"
    "${package}/marlune-targets.cmake"
    "${package}/marlune-targets-${config}.cmake")

file(GLOB_RECURSE installed RELATIVE "${PREFIX}" "${PREFIX}/*")
list(FILTER installed EXCLUDE REGEX
    "^addons/webview/(.*/.*|QtWebEngineProcess[.]exe|manifest[.]json|qt[.]rcc)$")
compare_lists("The installed files are" EXPECTED expected ACTUAL installed
    REMEDY "Mend the install rules, or this test where the change is wanted")
