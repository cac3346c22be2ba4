# Compiles through ccache if it is found. With MSVC it does not cache sources that use precompiled
# headers.
find_program(CCACHE_PROGRAM ccache)
if(NOT CCACHE_PROGRAM OR MSVC OR CMAKE_CXX_COMPILER_LAUNCHER)
    return()
endif()

# In the environment, because only ccache 4.8 and later accept settings as arguments. With this sloppiness it
# caches sources that use precompiled headers.
set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
    CCACHE_SLOPPINESS=pch_defines,time_macros "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" "${CCACHE_PROGRAM}")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fpch-preprocess)
endif()
