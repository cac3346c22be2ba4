#pragma once

#include <vulkan/vulkan.h>

#include <cstddef>
#include <map>
#include <string>

/**
 * A Vulkan layer between the validation layer and the driver, for tests of what a driver seldom does:
 * calls that fail, a lost device, a second queue. It also counts what the driver has made. A VulkanHost
 * that is made with its name has it.
 *
 * For any thread. One device at a time: all devices share what is said and counted here.
 */
namespace marlune::test::driver_layer {

constexpr const char* NAME = "VK_LAYER_MARLUNE_tests";

/** Says to Vulkan's loader where the layer is. Before an instance is made. */
void announce();

/** The `nth` call of `function` from now on, 1 for the next one, fails with `result`. */
void fail_call(const std::string& function, int nth, VkResult result);

/** From now on all calls of `function` fail with `result`. */
void fail_calls(const std::string& function, VkResult result);

/** Ends all failures, and counts calls from 0 again. */
void forget();

/** How often each function was called since forget(), of those that can fail. */
std::map<std::string, int> calls();

/** How many objects of each kind there are, by the names "Buffer", "Image" and so on. */
std::map<std::string, int> objects();

/** Size of the data with which the last pipeline cache was made. */
size_t pipeline_cache_data();

}  // namespace marlune::test::driver_layer
