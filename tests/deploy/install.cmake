# Installs the build into a fresh prefix.
file(REMOVE_RECURSE "${PREFIX}")
execute_process(
    COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}" --config "${CONFIG}"
    COMMAND_ERROR_IS_FATAL ANY)
