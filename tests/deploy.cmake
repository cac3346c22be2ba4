# What a host gets: the installed tree, what the library exports, and a project of its own that uses it.

set(deploy_dir "${CMAKE_CURRENT_BINARY_DIR}/deploy")
set(deploy_prefix "${deploy_dir}/prefix")

# marlune_add_script_test(<name> <label> <script> [<variable>=<value>...])
function(marlune_add_script_test name label script)
    list(TRANSFORM ARGN PREPEND "-D" OUTPUT_VARIABLE definitions)
    add_test(NAME ${name}
        COMMAND "${CMAKE_COMMAND}" ${definitions} -P "${CMAKE_CURRENT_SOURCE_DIR}/${script}")
    set_tests_properties(${name} PROPERTIES LABELS "${label}" TIMEOUT 300)
endfunction()

marlune_add_script_test(install deploy deploy/install.cmake
    "BUILD_DIR=${PROJECT_BINARY_DIR}" CONFIG=$<CONFIG> "PREFIX=${deploy_prefix}")
set_tests_properties(install PROPERTIES FIXTURES_SETUP installed_marlune)

marlune_add_script_test(installed_files deploy deploy/installed_files.cmake
    CONFIG=$<CONFIG> "PREFIX=${deploy_prefix}" "INCLUDE_DIR=${PROJECT_SOURCE_DIR}/include"
    "INSTALL_INCLUDEDIR=${CMAKE_INSTALL_INCLUDEDIR}" "INSTALL_LIBDIR=${CMAKE_INSTALL_LIBDIR}"
    "LIBRARY_DIR=${marlune_library_dir}")

marlune_add_script_test(exports deploy deploy/exports.cmake
    "NM=${CMAKE_NM}" "LIBRARY=${deploy_prefix}/${marlune_library_dir}/libmarlune.so")

set(consumer_flags "${CMAKE_CXX_FLAGS}")
if(MARLUNE_SANITIZE)
    # A program that loads a sanitized library has to be sanitized itself.
    string(APPEND consumer_flags " -fsanitize=address,undefined")
endif()
marlune_add_script_test(consumer deploy deploy/consumer.cmake
    "PREFIX=${deploy_prefix}" "BINARY_DIR=${deploy_dir}/consumer" "GENERATOR=${CMAKE_GENERATOR}"
    "CXX_COMPILER=${CMAKE_CXX_COMPILER}" "CXX_FLAGS=${consumer_flags}" CONFIG=$<CONFIG>)

set_tests_properties(installed_files exports consumer PROPERTIES FIXTURES_REQUIRED installed_marlune)

if(MARLUNE_INSTALL_QT AND MARLUNE_BUILD_EXAMPLES)
    include(addon.cmake)
endif()
