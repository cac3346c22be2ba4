#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

/** The sound that the device receives. */
struct Sound {
    double level = 0;      // root of the mean square, 1 for the loudest square wave
    double frequency = 0;  // of a tone, in Hz
};

/**
 * A sound server of this process. Its only device plays to the test alone. It replaces the system's
 * sound server from its construction on: create it before the library starts, and keep it until the
 * library has stopped. Throws std::runtime_error if it cannot start.
 */
class SoundServer {
public:
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    /** The sound of the last tenth of a second. For any thread. */
    Sound heard() const;

private:
    void listen();

    std::filesystem::path folder_;
    pid_t server_ = -1;
    pid_t recorder_ = -1;
    int recording_ = -1;
    mutable std::mutex mutex_;
    std::vector<int16_t> samples_;
    std::thread listener_;
};

}  // namespace marlune::test
