# The endurance tests. Each program is registered twice: in its brief form, which is a part of every
# run, and in its full one, <name>_soak, which is not (./dev soak).

add_library(marlune_endurance_support STATIC support/any_call.cpp support/endurance.cpp)
marlune_configure_target(marlune_endurance_support)
set_target_properties(marlune_endurance_support PROPERTIES AUTOMOC OFF)
target_link_libraries(marlune_endurance_support PUBLIC marlune_test_support)

add_library(marlune_endurance_scenes OBJECT)
marlune_configure_target(marlune_endurance_scenes)
target_link_libraries(marlune_endurance_scenes PRIVATE Qt6::Core)
marlune_add_qml_module(marlune_endurance_scenes NAME Stress BASE_DIR scenes/stress COMPONENTS Tint.qml)

function(marlune_add_endurance_test name)
    marlune_add_test(${name} LABELS stress SOURCES ${name}.cpp
        LIBRARIES marlune_endurance_support marlune_endurance_scenes ${ARGN})
    marlune_run_again(${name} soak LABELS stress soak TIMEOUT 7200 ENVIRONMENT MARLUNE_SOAK=1)
endfunction()

foreach(name IN ITEMS
        stress_callbacks
        stress_cycles
        stress_destroy
        stress_input
        stress_stale
        stress_views
        stress_web_calls
        stress_web_pages)
    marlune_add_endurance_test(${name})
endforeach()
marlune_add_endurance_test(stress_channel WHITEBOX)
marlune_add_endurance_test(stress_fuzz WHITEBOX)
marlune_add_endurance_test(stress_process OWN_MAIN)
marlune_add_endurance_test(stress_web_starts OWN_MAIN)
marlune_add_endurance_test(web_processes OWN_MAIN TIMEOUT 300)

# Players that come and go.
marlune_add_endurance_test(stress_players marlune_media_support)
marlune_give_clips(stress_players stress_players_soak)

# Films that are damaged.
marlune_add_endurance_test(stress_films marlune_media_support)
marlune_give_clips(stress_films stress_films_soak)

# Cameras that come and go.
marlune_add_endurance_test(stress_cameras marlune_camera_support)
