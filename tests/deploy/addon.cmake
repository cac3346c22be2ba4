# The add-on directory as a game ships it: its content, and that it runs where no Qt is installed. Only
# builds that install Qt have these tests: of the presets, release alone.

find_library(XCB_LIBRARY xcb REQUIRED)
add_executable(marlune-bare-host bare_host.cpp)
marlune_configure_target(marlune-bare-host)
set_target_properties(marlune-bare-host PROPERTIES
    AUTOMOC OFF
    BUILD_RPATH "\$ORIGIN;\$ORIGIN/addons/webview")  # of a game that it is copied into
target_compile_options(marlune-bare-host PRIVATE -Wno-missing-field-initializers)
target_include_directories(marlune-bare-host PRIVATE "${PROJECT_SOURCE_DIR}/tests")
target_include_directories(marlune-bare-host SYSTEM PRIVATE "${STB_INCLUDE_DIR}")
target_link_libraries(marlune-bare-host PRIVATE
    marlune_fake_camera marlune::marlune Vulkan::Vulkan "${XCB_LIBRARY}")

set(addon_scripts "${CMAKE_CURRENT_SOURCE_DIR}")
set(addon_project "${PROJECT_BINARY_DIR}/project")

# A Debian 13 with the packages of a machine that runs games alone. Created once; ./dev clean --all
# removes it. Without the right to create one, the tests that need it are skipped.
set(bare_root "${PROJECT_SOURCE_DIR}/.root/bare")

# marlune_add_addon_test(<name> TIMEOUT <seconds> COMMAND <script> [<argument>...])
function(marlune_add_addon_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "COMMAND")
    list(POP_FRONT arg_COMMAND script)
    add_test(NAME ${name} COMMAND "${addon_scripts}/${script}" ${arg_COMMAND})
    set_tests_properties(${name} PROPERTIES LABELS deploy TIMEOUT ${arg_TIMEOUT} SKIP_RETURN_CODE 77)
endfunction()

marlune_add_addon_test(addon_files TIMEOUT 120
    COMMAND addon_files.sh "${deploy_prefix}/addons/webview" "${addon_project}" "${PROJECT_SOURCE_DIR}")

marlune_add_addon_test(addon_alone TIMEOUT 120
    COMMAND with_display.sh "${addon_scripts}/addon_alone.sh" "${deploy_prefix}/addons/webview"
        $<TARGET_FILE:marlune-bare-host> "${marlune_test_clips}/quadrants.mp4" "${deploy_dir}/alone")

marlune_add_script_test(addon_archive deploy addon_archive.cmake
    "CPACK=${CMAKE_CPACK_COMMAND}" "BUILD_DIR=${PROJECT_BINARY_DIR}" CONFIG=$<CONFIG>
    "WORK_DIR=${deploy_dir}/archive" "PREFIX=${deploy_prefix}")

marlune_add_addon_test(bare_root TIMEOUT 600 COMMAND make_bare_root.sh "${bare_root}")
marlune_add_addon_test(bare_game TIMEOUT 120
    COMMAND bare_game.sh "${bare_root}" "${deploy_prefix}" $<TARGET_FILE:marlune-bare-host>
        $<TARGET_FILE:marlune_fake_camera> $<TARGET_FILE:marlune-minimal>
        "${marlune_test_clips}/quadrants.mp4")
marlune_add_addon_test(bare_views TIMEOUT 300
    COMMAND with_display.sh "${addon_scripts}/bare_views.sh" "${bare_root}"
        $<TARGET_FILE:marlune-bare-host> "${addon_project}" "${marlune_test_clips}/quadrants.mp4"
        "${deploy_dir}/pictures")
marlune_add_addon_test(bare_missing TIMEOUT 300
    COMMAND with_display.sh "${addon_scripts}/bare_missing.sh" "${bare_root}")
add_test(NAME bare_game_removal COMMAND "${CMAKE_COMMAND}" -E rm -rf "${bare_root}/game")

set_tests_properties(addon_files addon_archive PROPERTIES FIXTURES_REQUIRED installed_marlune)
set_tests_properties(addon_alone PROPERTIES FIXTURES_REQUIRED "installed_marlune;media_clips")
set_tests_properties(bare_root PROPERTIES FIXTURES_SETUP bare_root)
set_tests_properties(bare_game PROPERTIES
    FIXTURES_SETUP bare_game FIXTURES_REQUIRED "bare_root;installed_marlune;media_clips")
set_tests_properties(bare_views bare_missing PROPERTIES
    FIXTURES_REQUIRED "bare_game;media_clips" RESOURCE_LOCK bare_game)
set_tests_properties(bare_game_removal PROPERTIES LABELS deploy FIXTURES_CLEANUP bare_game)
