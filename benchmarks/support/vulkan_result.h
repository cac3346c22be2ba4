#pragma once

#include <vulkan/vulkan.h>

#include <stdexcept>
#include <string>

namespace marlune::bench {

inline void check(VkResult result, const char* call)
{
    if (result != VK_SUCCESS)
        throw std::runtime_error(std::string(call) + " failed: VkResult " + std::to_string(result));
}

}  // namespace marlune::bench
