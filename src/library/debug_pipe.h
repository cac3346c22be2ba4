#pragma once

#include "runtime/platform.h"

#include <mutex>
#include <string>
#include <vector>

namespace marlune {

/**
 * Collects messages from any thread and writes them to the debug pipe from one thread of its own.
 */
class DebugPipeWriter {
public:
    explicit DebugPipeWriter(platform::PipeHandle pipe) : pipe_(pipe) {}

    void enqueue(std::string message);

    /** Writes the queued messages in order. A message that cannot be written is dropped. */
    void write_pending();

    /** Calls write_pending() every 200 ms until the process ends. */
    [[noreturn]] void run();

private:
    const platform::PipeHandle pipe_;
    std::mutex mutex_;
    std::vector<std::string> pending_;
};

/** Connects to the debug pipe and starts the writer's thread; reports a failed connection. */
void start_debug_pipe();

}  // namespace marlune
