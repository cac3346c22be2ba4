#pragma once

#include "runtime/platform.h"

#include <mutex>
#include <string>
#include <vector>

namespace marlune {

/** Collects messages from any thread and writes them to the debug pipe from one thread of its own. */
class DebugPipeWriter {
public:
    explicit DebugPipeWriter(platform::PipeHandle pipe) : pipe_(pipe) {}

    void enqueue(std::string message);

    /** One pass: writes what has been queued, in order. A message that cannot be written is dropped. */
    void write_pending();

    /** A pass every 200 ms, for ever. */
    [[noreturn]] void run();

private:
    const platform::PipeHandle pipe_;
    std::mutex mutex_;
    std::vector<std::string> pending_;
};

/** Connects to the debug pipe and starts its writer's thread; reports a pipe that is not there. */
void start_debug_pipe();

}  // namespace marlune
