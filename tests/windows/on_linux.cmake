# The library for Windows, checked on Linux: compiled, linked and examined; its parts without Qt run
# under Wine. One preset is enough, because this build is the same for all.
if(NOT MARLUNE_TEST_WINDOWS)
    return()
endif()
find_program(MINGW_COMPILER x86_64-w64-mingw32-g++-posix)
find_program(WINE_PROGRAM NAMES wine64 wine HINTS /usr/lib/wine)
find_program(WINESERVER_PROGRAM wineserver HINTS /usr/lib/wine)
if(NOT MINGW_COMPILER OR NOT WINE_PROGRAM OR NOT WINESERVER_PROGRAM)
    add_test(NAME windows
        COMMAND "${CMAKE_COMMAND}" -E echo "skipped: mingw-w64 and Wine are not both installed")
    set_tests_properties(windows PROPERTIES LABELS windows SKIP_REGULAR_EXPRESSION "^skipped")
    return()
endif()

set(windows_build "${PROJECT_SOURCE_DIR}/build/windows")
add_test(NAME windows_build COMMAND "${PROJECT_SOURCE_DIR}/dev" windows)
set_tests_properties(windows_build PROPERTIES
    LABELS windows TIMEOUT 1200 PROCESSORS 2 FIXTURES_SETUP windows_build)

marlune_add_script_test(windows_exports windows windows/exports.cmake
    "LIBRARY=${windows_build}/lib/libmarlune.dll")
set_tests_properties(windows_exports PROPERTIES FIXTURES_REQUIRED windows_build)

# A Wine prefix of its own, which shows no windows, downloads nothing and is removed after the tests.
set(prefix "${CMAKE_CURRENT_BINARY_DIR}/wine")
set(environment "WINEPREFIX=${prefix}" WINEDEBUG=-all "WINEDLLOVERRIDES=mscoree,mshtml=" DISPLAY=)
add_test(NAME windows_start COMMAND "${WINE_PROGRAM}" wineboot --init)
set_tests_properties(windows_start PROPERTIES
    LABELS windows TIMEOUT 300 ENVIRONMENT "${environment}" FIXTURES_SETUP wine)
add_test(NAME windows_stop COMMAND bash -c "\"$0\" --kill; rm -rf \"$1\"" "${WINESERVER_PROGRAM}" "${prefix}")
set_tests_properties(windows_stop PROPERTIES
    LABELS windows TIMEOUT 60 ENVIRONMENT "${environment}" FIXTURES_CLEANUP wine)

add_test(NAME windows_platform
    COMMAND "${WINE_PROGRAM}" "${windows_build}/tests/windows/test-windows_platform.exe")
set_tests_properties(windows_platform PROPERTIES
    LABELS windows TIMEOUT 120 ENVIRONMENT "${environment}" FIXTURES_REQUIRED "windows_build;wine")
