#pragma once

#include "runtime/callback_slot.h"

#include <cstdint>
#include <string>

class QObject;

namespace marlune {

using ResourceFile = CallbackSlot<uint8_t*(std::string path, bool& flag, uint64_t& size)>;

/**
 * Serves the host's packed files to all views: an object of the Qt thread and the host's function.
 */
struct ResourceServer {
    QObject* object = nullptr;
    ResourceFile* file = nullptr;
};

/** Set by the start; null before. */
ResourceServer& resource_server();

}  // namespace marlune
