# What plays sound and video, with clips that are made first.

set(media_clips "${PROJECT_BINARY_DIR}/clips")
add_test(NAME media_clips
    COMMAND bash "${CMAKE_CURRENT_SOURCE_DIR}/clips/make_clips.sh" "${media_clips}")
set_tests_properties(media_clips PROPERTIES LABELS media TIMEOUT 300 FIXTURES_SETUP media_clips)

add_library(marlune_media_support STATIC
    support/followed_view.cpp
    support/host_video_view.cpp
    support/sound_server.cpp)
marlune_configure_target(marlune_media_support)
set_target_properties(marlune_media_support PROPERTIES AUTOMOC OFF)
target_link_libraries(marlune_media_support PUBLIC marlune_test_support)

function(marlune_give_clips)
    foreach(name IN LISTS ARGN)
        set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT "MARLUNE_CLIPS=${media_clips}")
        set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED media_clips)
    endforeach()
endfunction()

# marlune_add_media_test(<name> [<argument of marlune_add_test>...])
function(marlune_add_media_test name)
    marlune_add_test(${name} LABELS media SOURCES ${name}.cpp LIBRARIES marlune_media_support ${ARGN})
    marlune_give_clips(${name})
endfunction()

# The views behind the facades, without a scene.
foreach(name IN ITEMS unit_screen_capture_view unit_video_view)
    marlune_add_test(${name} LABELS unit SOURCES ${name}.cpp WHITEBOX LIBRARIES Qt6::Test)
endforeach()
marlune_add_test(unit_camera_view LABELS unit SOURCES unit_camera_view.cpp WHITEBOX
    LIBRARIES Qt6::Test marlune_fake_camera)

# The player through its facade, playing real clips.
foreach(name IN ITEMS
        media_callbacks
        media_controls
        media_frames
        media_lifetime
        media_player
        media_sound
        media_sources
        media_tracks)
    marlune_add_media_test(${name})
endforeach()

# What a process leaves behind that ends while a player plays.
marlune_add_media_test(media_process OWN_MAIN)

# Cameras that are not there. A program that has them in front of the system's functions sees no others.
add_library(marlune_fake_camera SHARED
    support/fake_camera.cpp
    support/fake_camera_calls.cpp
    support/fake_camera_driver.cpp
    support/fake_camera_picture.cpp)
marlune_configure_target(marlune_fake_camera)
set_target_properties(marlune_fake_camera PROPERTIES AUTOMOC OFF CXX_VISIBILITY_PRESET default)
target_include_directories(marlune_fake_camera PRIVATE .)
target_link_libraries(marlune_fake_camera PRIVATE GTest::gtest ${CMAKE_DL_LIBS})
add_library(marlune_camera_support STATIC support/host_camera_view.cpp)
marlune_configure_target(marlune_camera_support)
set_target_properties(marlune_camera_support PROPERTIES AUTOMOC OFF)
target_link_libraries(marlune_camera_support PUBLIC marlune_media_support marlune_fake_camera)

# Cameras through their facade.
foreach(name IN ITEMS
        media_camera
        media_camera_callbacks
        media_camera_controls
        media_camera_hints)
    marlune_add_test(${name} LABELS media SOURCES ${name}.cpp LIBRARIES marlune_camera_support)
endforeach()

# What a process leaves behind that ends while a camera runs.
marlune_add_test(media_camera_process LABELS media
    SOURCES media_camera_process.cpp LIBRARIES marlune_camera_support OWN_MAIN)
