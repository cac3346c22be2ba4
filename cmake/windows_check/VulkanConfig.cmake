# Vulkan's headers are the same on all systems, but share their folder with this system's own.
set(folder "${CMAKE_BINARY_DIR}/stand_ins/include")
file(MAKE_DIRECTORY "${folder}")
foreach(headers IN ITEMS vulkan vk_video)
    file(CREATE_LINK "/usr/include/${headers}" "${folder}/${headers}" SYMBOLIC)
endforeach()

# An import library for the loader, of the functions that the header declares.
set(loader "${CMAKE_BINARY_DIR}/stand_ins/lib/libvulkan-1.dll.a")
if(NOT EXISTS "${loader}")
    file(STRINGS "${folder}/vulkan/vulkan_core.h" functions REGEX " VKAPI_CALL vk[A-Za-z0-9]+[(]")
    list(TRANSFORM functions REPLACE ".* VKAPI_CALL (vk[A-Za-z0-9]+)[(].*" "    \\1")
    list(JOIN functions "\n" functions)
    cmake_path(REPLACE_EXTENSION loader LAST_ONLY def OUTPUT_VARIABLE definitions)
    file(WRITE "${definitions}" "LIBRARY vulkan-1.dll\nEXPORTS\n${functions}\n")
    execute_process(COMMAND "${CMAKE_DLLTOOL}" --input-def "${definitions}" --output-lib "${loader}"
        COMMAND_ERROR_IS_FATAL ANY)
endif()

if(NOT TARGET Vulkan::Headers)
    add_library(Vulkan::Headers INTERFACE IMPORTED GLOBAL)
    target_include_directories(Vulkan::Headers INTERFACE "${folder}")
    add_library(Vulkan::Vulkan INTERFACE IMPORTED GLOBAL)
    target_link_libraries(Vulkan::Vulkan INTERFACE Vulkan::Headers "${loader}")
endif()
