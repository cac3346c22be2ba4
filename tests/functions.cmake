# What the CMake files of the tests have in common.

set(marlune_test_environment "MARLUNE_PROJECT_ROOT=${PROJECT_BINARY_DIR}/project")
set(marlune_test_clips "${PROJECT_BINARY_DIR}/clips")

# marlune_add_test(<name> [LIBRARIES <target>...] [WHITEBOX] [CLIPS] [TIMEOUT <seconds>])
# A program test-<name>, which is one CTest test. Its label is the folder, and its source has the
# rest of its name: unit_calls is unit/calls.cpp. WHITEBOX tests see the library's insides; those with
# CLIPS need the clips.
function(marlune_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "WHITEBOX;CLIPS" "TIMEOUT" "LIBRARIES")
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME folder)
    string(REGEX REPLACE "^${folder}_" "" source "${name}")
    set(target test-${name})
    add_executable(${target} ${source}.cpp)
    marlune_configure_target(${target})
    # Compiling them is most of a build, of which optimizing would be a third.
    target_compile_options(${target} PRIVATE -O0)
    target_link_libraries(${target} PRIVATE
        marlune_test_main marlune_test_support marlune_test_scenes ${arg_LIBRARIES})
    if(arg_WHITEBOX)
        target_link_libraries(${target} PRIVATE marlune_objects)
    else()
        set_target_properties(${target} PROPERTIES AUTOMOC OFF)
        target_link_libraries(${target} PRIVATE marlune::marlune)
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()

    add_test(NAME ${name} COMMAND ${target} WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
    set_tests_properties(${name} PROPERTIES
        LABELS ${folder}
        TIMEOUT ${arg_TIMEOUT}
        ENVIRONMENT "${marlune_test_environment}")
    if(arg_CLIPS)
        marlune_give_clips(${name})
    endif()
endfunction()

# marlune_give_clips(<test>)
function(marlune_give_clips test)
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT "MARLUNE_CLIPS=${marlune_test_clips}")
    set_tests_properties(${test} PROPERTIES FIXTURES_REQUIRED media_clips)
endfunction()

# marlune_run_again(<name> <suffix> LABELS <label>... TIMEOUT <seconds> ENVIRONMENT <variable>...)
# Makes a test <name>_<suffix> of the program of another test, in another environment.
function(marlune_run_again name suffix)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "TIMEOUT" "LABELS;ENVIRONMENT")
    set(test ${name}_${suffix})
    add_test(NAME ${test} COMMAND test-${name} WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
    set_tests_properties(${test} PROPERTIES
        LABELS "${arg_LABELS}"
        TIMEOUT ${arg_TIMEOUT}
        ENVIRONMENT "${marlune_test_environment};${arg_ENVIRONMENT}"
        # Given a folder alone, GoogleTest would name the report after the program.
        ENVIRONMENT_MODIFICATION "GTEST_OUTPUT=string_append:test-${test}.xml")
endfunction()

# marlune_add_script_test(<name> <label> <script> [<variable>=<value>...])
function(marlune_add_script_test name label script)
    list(TRANSFORM ARGN PREPEND "-D" OUTPUT_VARIABLE definitions)
    add_test(NAME ${name}
        COMMAND "${CMAKE_COMMAND}" ${definitions} -P "${CMAKE_CURRENT_SOURCE_DIR}/${script}")
    set_tests_properties(${name} PROPERTIES LABELS "${label}" TIMEOUT 300)
endfunction()

# marlune_add_test_library(<target> <kind> <source>...)
# A library that tests share. It includes files by their path in this folder.
function(marlune_add_test_library target kind)
    add_library(${target} ${kind} ${ARGN})
    marlune_configure_target(${target})
    set_target_properties(${target} PROPERTIES AUTOMOC OFF)
    target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}/tests")
endfunction()
