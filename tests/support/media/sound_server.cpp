#include "support/media/sound_server.h"

#include "support/process/processes.h"
#include "support/wait.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace marlune::test {

namespace {

constexpr int SAMPLES_A_SECOND = 48000;
constexpr size_t SAMPLES_KEPT = SAMPLES_A_SECOND / 10;

std::filesystem::path make_folder()
{
    std::string folder = std::filesystem::temp_directory_path() / "sound-XXXXXX";
    if (!mkdtemp(folder.data()))
        throw std::runtime_error("cannot make " + folder);
    return folder;
}

}  // namespace

SoundServer::SoundServer() : folder_(make_folder())
{
    const std::string socket = folder_ / "socket";
    setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
    setenv("PULSE_RUNTIME_PATH", folder_.c_str(), 1);
    server_ = start_program({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                             "--use-pid-file=no", "-L",
                             "module-native-protocol-unix auth-anonymous=1 socket=" + socket, "-L",
                             "module-null-sink sink_name=test rate=48000"});
    if (!wait_until([&] { return std::filesystem::exists(socket); }))
        throw std::runtime_error("the sound server does not start: is pulseaudio installed?");

    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("there is no pipe");
    recorder_ =
        start_program({"parec", "--device=test.monitor", "--raw", "--format=s16le", "--channels=1",
                       "--rate=" + std::to_string(SAMPLES_A_SECOND), "--latency-msec=20"},
                      ends[1]);
    close(ends[1]);
    recording_ = ends[0];
    listener_ = std::thread([this] { listen(); });
}

SoundServer::~SoundServer()
{
    // The end of the recording program closes the pipe, which also ends the listening thread.
    end_program(recorder_);
    listener_.join();
    close(recording_);
    end_program(server_);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void SoundServer::listen()
{
    std::array<int16_t, 1024> chunk;
    for (;;) {
        const ssize_t bytes = read(recording_, chunk.data(), sizeof(chunk));
        if (bytes <= 0)
            return;
        const std::lock_guard lock(mutex_);
        samples_.insert(samples_.end(), chunk.begin(), chunk.begin() + bytes / 2);
        if (samples_.size() > SAMPLES_KEPT)
            samples_.erase(samples_.begin(), samples_.end() - SAMPLES_KEPT);
    }
}

Sound SoundServer::heard() const
{
    const std::lock_guard lock(mutex_);
    if (samples_.size() < SAMPLES_KEPT)
        return {};
    double squares = 0;
    int rises = 0;
    for (size_t i = 0; i < samples_.size(); ++i) {
        const double value = samples_[i] / 32768.0;
        squares += value * value;
        rises += i > 0 && samples_[i - 1] < 0 && samples_[i] >= 0;
    }
    const auto count = double(samples_.size());
    return {std::sqrt(squares / count), rises * SAMPLES_A_SECOND / count};
}

}  // namespace marlune::test
