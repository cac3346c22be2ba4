#include "support/media/fake_camera.h"

#include "support/media/fake_camera_devices.h"
#include "support/media/fake_camera_driver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr int FILES_AT_MOST = 4096;

/**
 * The bus of the plugged cameras. Never destroyed: threads may still use cameras while the process
 * ends.
 */
struct Bus {
    std::mutex mutex;
    std::condition_variable listed;
    int listings = 0;
    bool is_watched = false;
    std::map<std::string, std::shared_ptr<CameraDevice>> devices;  // by node: "video0"
    std::map<int, CameraFile> files;
};

Bus& bus()
{
    static Bus* const bus = new Bus;
    return *bus;
}

std::array<std::atomic<bool>, FILES_AT_MOST> camera_files;

std::string node_path(const std::string& node)
{
    return camera_nodes() + "/" + node;
}

void unplug(const std::string& node)
{
    const auto found = bus().devices.find(node);
    found->second->is_plugged = false;
    for (const auto& [file, state] : bus().files) {
        if (state.device == found->second && state.is_running)
            wake(file);
    }
    unlink(node_path(node).c_str());
    bus().devices.erase(found);  // `node` may refer to a part of it
}

void plug(const std::string& node, const FakeCamera& camera)
{
    bus().devices[node] = make_camera_device(camera);
    // The nodes are pipes: these are not regular files, and every user may create them.
    if (mkfifo(node_path(node).c_str(), 0600) != 0)
        throw std::runtime_error("cannot make " + node_path(node));
}

void wait_until_listed(std::unique_lock<std::mutex> lock)
{
    const int before = bus().listings;
    const auto has_been_listed = [&] { return bus().listings > before; };
    if (bus().is_watched && !bus().listed.wait_for(lock, 10s, has_been_listed))
        throw std::runtime_error("Qt does not look for the cameras that were plugged");
}

template <typename Predicate>
std::vector<std::string> cameras_of_files(Predicate counts)
{
    const std::lock_guard lock(bus().mutex);
    std::vector<std::string> names;
    for (const auto& [file, state] : bus().files) {
        if (counts(state))
            names.push_back(state.device->camera.name);
    }
    std::ranges::sort(names);
    return names;
}

struct Folder {
    Folder() : path(std::filesystem::temp_directory_path() / "cameras-XXXXXX")
    {
        if (!mkdtemp(path.data()))
            throw std::runtime_error("cannot make " + path);
    }

    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    std::string path;
};

}  // namespace

// --- For the system's calls ----------------------------------------------------------------------

const std::string& camera_nodes()
{
    static const Folder folder;
    return folder.path;
}

void note_nodes_are_listed()
{
    const std::lock_guard lock(bus().mutex);
    ++bus().listings;
    bus().listed.notify_all();
}

void note_nodes_are_watched()
{
    const std::lock_guard lock(bus().mutex);
    bus().is_watched = true;
}

int open_camera(const std::string& node, int flags)
{
    const std::lock_guard lock(bus().mutex);
    const auto found = bus().devices.find(std::filesystem::path(node).filename());
    if (found == bus().devices.end())
        return -ENOENT;
    if (found->second->camera.is_locked && (flags & O_ACCMODE) != O_RDONLY)
        return -EACCES;
    const int file = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (file < 0 || file >= FILES_AT_MOST)
        return -EMFILE;
    bus().files[file].device = found->second;
    camera_files[file] = true;
    return file;
}

bool is_camera_file(int file)
{
    return file >= 0 && file < FILES_AT_MOST && camera_files[file];
}

void close_camera(int file)
{
    const std::lock_guard lock(bus().mutex);
    int& user = bus().files[file].device->user;
    user = user == file ? -1 : user;
    bus().files.erase(file);
    camera_files[file] = false;
}

int ask_camera(int file, uint32_t request, void* argument)
{
    const std::lock_guard lock(bus().mutex);
    const auto state = bus().files.find(file);
    return state == bus().files.end() ? EBADF : answer(file, state->second, request, argument);
}

// --- For tests -----------------------------------------------------------------------------------

void plug_cameras(const std::vector<FakeCamera>& cameras)
{
    std::unique_lock lock(bus().mutex);
    if (cameras.empty() && bus().devices.empty())
        return;
    while (!bus().devices.empty())
        unplug(bus().devices.begin()->first);
    for (size_t i = 0; i < cameras.size(); ++i)
        plug("video" + std::to_string(i), cameras[i]);
    wait_until_listed(std::move(lock));
}

void unplug_camera(const std::string& name)
{
    std::unique_lock lock(bus().mutex);
    const auto found = std::ranges::find_if(
        bus().devices, [&](const auto& device) { return device.second->camera.name == name; });
    if (found == bus().devices.end())
        throw std::runtime_error("there is no camera " + name);
    unplug(std::string(found->first));
    wait_until_listed(std::move(lock));
}

std::vector<std::string> running_cameras()
{
    return cameras_of_files([](const CameraFile& file) { return file.is_running; });
}

std::vector<std::string> open_cameras()
{
    return cameras_of_files([](const CameraFile&) { return true; });
}

std::optional<int> camera_control(const std::string& name, uint32_t control)
{
    const std::lock_guard lock(bus().mutex);
    for (const auto& [node, device] : bus().devices) {
        if (device->camera.name == name && device->controls.contains(control))
            return device->controls.at(control).value;
    }
    return std::nullopt;
}

}  // namespace marlune::test
