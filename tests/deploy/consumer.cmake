# Configures, builds and runs the project in tests/consumer against an installation, without Qt.
cmake_minimum_required(VERSION 3.25)
cmake_path(SET source_dir NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../consumer")

file(REMOVE_RECURSE "${BINARY_DIR}")
execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${source_dir}" -B "${BINARY_DIR}" -G "${GENERATOR}"
        "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DCMAKE_BUILD_TYPE=${CONFIG}"
        "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS} -Wall -Wextra -Werror"
        -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${BINARY_DIR}" COMMAND_ERROR_IS_FATAL ANY)

file(READ "${BINARY_DIR}/compile_commands.json" commands)
string(REGEX MATCHALL "(-I|-isystem) *[^ \"]+" include_flags "${commands}")
if(NOT include_flags MATCHES "${PREFIX}")
    message(FATAL_ERROR "The consumer does not compile against the installed headers: ${include_flags}")
endif()
foreach(flag IN LISTS include_flags)
    string(REGEX REPLACE "^(-I|-isystem) *" "" dir "${flag}")
    if(EXISTS "${dir}/QtCore" OR EXISTS "${dir}/qglobal.h")
        message(FATAL_ERROR "The consumer sees Qt's headers in ${dir}; a host has to do without")
    endif()
endforeach()

execute_process(COMMAND "${BINARY_DIR}/consumer" COMMAND_ERROR_IS_FATAL ANY)
