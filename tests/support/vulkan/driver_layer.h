#pragma once

#include <vulkan/vulkan.h>

#include <cstddef>
#include <map>
#include <string>

/**
 * A Vulkan layer between the validation layer and the driver, for rare behaviour of drivers: calls
 * that fail, a lost device, a second queue. It also counts the objects that the driver has created.
 * A VulkanHost has it if it is created with its name.
 *
 * For any thread. One device at a time: all devices share these settings and counts.
 */
namespace marlune::test::driver_layer {

constexpr const char* NAME = "VK_LAYER_MARLUNE_tests";

/** Sets where the Vulkan loader finds the layer. Call it before an instance is created. */
void announce();

/** Makes the `nth` call of `function` from now on, 1 for the next one, fail with `result`. */
void fail_call(const std::string& function, int nth, VkResult result);

/** Makes all calls of `function` from now on fail with `result`. */
void fail_calls(const std::string& function, VkResult result);

/** Ends all failures, and restarts the counts of calls at 0. */
void forget();

/** The number of calls of each function since forget(), for the functions that can fail. */
std::map<std::string, int> calls();

/** The number of existing objects of each kind, by the names "Buffer", "Image" and so on. */
std::map<std::string, int> objects();

/** Size of the data with which the last pipeline cache was created. */
size_t pipeline_cache_data();

}  // namespace marlune::test::driver_layer
