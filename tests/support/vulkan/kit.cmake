# The Vulkan code of hosts, for the tests and the benchmarks, each of which can be built without the
# other.
include_guard(GLOBAL)

add_library(marlune_vulkan_kit STATIC "${CMAKE_CURRENT_LIST_DIR}/kit.cpp")
marlune_configure_target(marlune_vulkan_kit)
set_target_properties(marlune_vulkan_kit PROPERTIES AUTOMOC OFF)
target_compile_options(marlune_vulkan_kit PUBLIC
    -Wno-missing-field-initializers)  # Vulkan's structures are initialized in part by design
target_include_directories(marlune_vulkan_kit PUBLIC "${PROJECT_SOURCE_DIR}/tests")
target_link_libraries(marlune_vulkan_kit PUBLIC Vulkan::Vulkan)
