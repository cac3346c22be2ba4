# Vulkan's headers are the same on all systems, but share their folder with this system's own.
set(folder "${CMAKE_BINARY_DIR}/stand_ins/include")
file(MAKE_DIRECTORY "${folder}")
foreach(headers IN ITEMS vulkan vk_video)
    file(CREATE_LINK "/usr/include/${headers}" "${folder}/${headers}" SYMBOLIC)
endforeach()

if(NOT TARGET Vulkan::Headers)
    add_library(Vulkan::Headers INTERFACE IMPORTED GLOBAL)
    target_include_directories(Vulkan::Headers INTERFACE "${folder}")
endif()
