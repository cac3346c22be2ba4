#include "support/fake_camera.h"

#include "support/fake_camera_devices.h"

#include <fcntl.h>
#include <linux/videodev2.h>
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
#include <cstring>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr uint32_t FRAMES_A_SECOND = 30;
constexpr uint32_t BYTES_A_ROW = CAMERA_WIDTH * 2;
constexpr uint32_t BYTES_A_FRAME = BYTES_A_ROW * CAMERA_HEIGHT;
constexpr int FILES_AT_MOST = 4096;
constexpr size_t BUFFERS_AT_MOST = 8;

// --- The picture ------------------------------------------------------------------------------------

struct Yuv {
    uint8_t y, u, v;
};

/** As television of the standard definition has it: BT.601 in the limited range. */
Yuv to_yuv(Colour colour)
{
    const double r = colour.r / 255.0, g = colour.g / 255.0, b = colour.b / 255.0;
    return {uint8_t(16.5 + 65.481 * r + 128.553 * g + 24.966 * b),
            uint8_t(128.5 - 37.797 * r - 74.203 * g + 112.0 * b),
            uint8_t(128.5 + 112.0 * r - 93.786 * g - 18.214 * b)};
}

/** Two neighbours share their colour, so `area` begins and ends at even columns. */
void fill(uint8_t* frame, Rect area, Colour colour)
{
    const Yuv yuv = to_yuv(colour);
    for (uint32_t y = area.y; y < area.y + area.height; ++y) {
        uint8_t* pixels = frame + y * BYTES_A_ROW + area.x * 2;
        for (uint32_t x = 0; x < area.width; x += 2, pixels += 4) {
            pixels[0] = pixels[2] = yuv.y;
            pixels[1] = yuv.u;
            pixels[3] = yuv.v;
        }
    }
}

void draw_frame(uint8_t* frame, Colour border, uint32_t number)
{
    constexpr uint32_t WIDTH = CAMERA_WIDTH / 2, HEIGHT = CAMERA_HEIGHT / 2;
    constexpr uint32_t INNER_WIDTH = WIDTH - CAMERA_BORDER, INNER_HEIGHT = HEIGHT - CAMERA_BORDER;
    fill(frame, {0, 0, CAMERA_WIDTH, CAMERA_HEIGHT}, border);
    fill(frame, {CAMERA_BORDER, CAMERA_BORDER, INNER_WIDTH, INNER_HEIGHT}, RED);
    fill(frame, {WIDTH, CAMERA_BORDER, INNER_WIDTH, INNER_HEIGHT}, GREEN);
    fill(frame, {CAMERA_BORDER, HEIGHT, INNER_WIDTH, INNER_HEIGHT}, BLUE);
    fill(frame, {WIDTH, HEIGHT, INNER_WIDTH, INNER_HEIGHT}, WHITE);
    Rect cell = CAMERA_NUMBER;
    cell.width /= CAMERA_NUMBER_BITS;
    for (uint32_t bit = CAMERA_NUMBER_BITS; bit-- > 0; cell.x += cell.width)
        fill(frame, cell, number >> bit & 1 ? WHITE : BLACK);
}

// --- The cameras ------------------------------------------------------------------------------------

struct Control {
    int32_t minimum, maximum, value;
};

std::map<uint32_t, Control> all_controls()
{
    return {
        {V4L2_CID_AUTO_WHITE_BALANCE, {0, 1, 1}},
        {V4L2_CID_WHITE_BALANCE_TEMPERATURE, {2800, 6500, 4000}},
        {V4L2_CID_EXPOSURE_AUTO, {0, 3, V4L2_EXPOSURE_APERTURE_PRIORITY}},
        {V4L2_CID_EXPOSURE_ABSOLUTE, {10, 5000, 250}},  // in 100 microseconds
        {V4L2_CID_AUTO_EXPOSURE_BIAS, {-2000, 2000, 0}},
        {V4L2_CID_ISO_SENSITIVITY_AUTO, {0, 1, V4L2_ISO_SENSITIVITY_AUTO}},
        {V4L2_CID_ISO_SENSITIVITY, {100, 800, 200}},
        {V4L2_CID_FOCUS_AUTO, {0, 1, 1}},
        {V4L2_CID_FOCUS_ABSOLUTE, {0, 250, 0}},
        {V4L2_CID_FLASH_LED_MODE, {0, V4L2_FLASH_LED_MODE_TORCH, V4L2_FLASH_LED_MODE_NONE}},
        {V4L2_CID_ZOOM_ABSOLUTE, {100, 400, 100}},
    };
}

struct Device {
    FakeCamera camera;
    std::map<uint32_t, Control> controls;
    bool is_plugged = true;
    int user = -1;  // the file that has claimed its buffers
};

/** A file that is open on a camera, by number that of a timer, which is ready when a frame is due. */
struct CameraFile {
    std::shared_ptr<Device> device;
    std::deque<v4l2_buffer> queue;
    bool is_running = false;
    uint32_t frames = 0;
};

/** Never destroyed: other threads may still use cameras while the process ends. */
struct System {
    std::mutex mutex;
    std::condition_variable listed;
    int listings = 0;
    bool is_watched = false;
    std::map<std::string, std::shared_ptr<Device>> devices;  // by names of nodes: "video0"
    std::map<int, CameraFile> files;
};

System& system_()
{
    static System* const system = new System;
    return *system;
}

std::array<std::atomic<bool>, FILES_AT_MOST> camera_files;
std::atomic<int> pictures = 0;

void set_timer(int file, std::chrono::nanoseconds first, std::chrono::nanoseconds period)
{
    itimerspec times{};
    times.it_value.tv_nsec = first.count();
    times.it_interval.tv_nsec = period.count();
    timerfd_settime(file, 0, &times, nullptr);
}

// --- What a camera answers: 0 or the number of an error ----------------------------------------------

template <size_t Size>
void copy_text(const std::string& text, __u8 (&target)[Size])
{
    std::strncpy(reinterpret_cast<char*>(target), text.c_str(), Size - 1);
}

int describe(const Device& device, v4l2_capability& capability)
{
    capability = {};
    copy_text("fake", capability.driver);
    copy_text(device.camera.name, capability.card);
    copy_text("usb-fake", capability.bus_info);
    capability.device_caps = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    capability.capabilities = capability.device_caps | V4L2_CAP_DEVICE_CAPS;
    return 0;
}

int describe(v4l2_fmtdesc& format)
{
    if (format.index > 0 || format.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
        return EINVAL;
    format.flags = 0;
    format.pixelformat = V4L2_PIX_FMT_YUYV;
    copy_text("YUYV 4:2:2", format.description);
    return 0;
}

int describe(v4l2_frmsizeenum& size)
{
    if (size.index > 0 || size.pixel_format != V4L2_PIX_FMT_YUYV)
        return EINVAL;
    size.type = V4L2_FRMSIZE_TYPE_DISCRETE;
    size.discrete = {CAMERA_WIDTH, CAMERA_HEIGHT};
    return 0;
}

int describe(v4l2_frmivalenum& interval)
{
    if (interval.index > 0 || interval.width != CAMERA_WIDTH || interval.height != CAMERA_HEIGHT)
        return EINVAL;
    interval.type = V4L2_FRMIVAL_TYPE_DISCRETE;
    interval.discrete = {1, FRAMES_A_SECOND};
    return 0;
}

/** There is one format only, so any wish ends with it. */
int agree_on(v4l2_format& format)
{
    if (format.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
        return EINVAL;
    format.fmt.pix = {};
    format.fmt.pix.width = CAMERA_WIDTH;
    format.fmt.pix.height = CAMERA_HEIGHT;
    format.fmt.pix.pixelformat = V4L2_PIX_FMT_YUYV;
    format.fmt.pix.field = V4L2_FIELD_NONE;
    format.fmt.pix.bytesperline = BYTES_A_ROW;
    format.fmt.pix.sizeimage = BYTES_A_FRAME;
    format.fmt.pix.colorspace = V4L2_COLORSPACE_SMPTE170M;
    return 0;
}

int agree_on(v4l2_streamparm& parameters)
{
    if (parameters.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
        return EINVAL;
    parameters.parm.capture = {};
    parameters.parm.capture.capability = V4L2_CAP_TIMEPERFRAME;
    parameters.parm.capture.timeperframe = {1, FRAMES_A_SECOND};
    return 0;
}

int describe(const Device& device, v4l2_queryctrl& query)
{
    const auto control = device.controls.find(query.id);
    if (control == device.controls.end())
        return EINVAL;
    query = {};
    query.id = control->first;
    query.type = V4L2_CTRL_TYPE_INTEGER;
    query.minimum = control->second.minimum;
    query.maximum = control->second.maximum;
    query.step = 1;
    return 0;
}

int get(const Device& device, v4l2_control& control)
{
    const auto found = device.controls.find(control.id);
    if (found == device.controls.end())
        return EINVAL;
    control.value = found->second.value;
    return 0;
}

int set(Device& device, const v4l2_control& control)
{
    const auto found = device.controls.find(control.id);
    if (found == device.controls.end())
        return EINVAL;
    if (control.value < found->second.minimum || control.value > found->second.maximum)
        return ERANGE;
    found->second.value = control.value;
    return 0;
}

int claim_buffers(int file, CameraFile& state, v4l2_requestbuffers& request)
{
    if (request.memory != V4L2_MEMORY_USERPTR)
        return EINVAL;
    int& user = state.device->user;
    if (user != -1 && user != file)
        return EBUSY;
    user = request.count == 0 ? -1 : file;
    state.queue.clear();
    request.count = std::min<uint32_t>(request.count, BUFFERS_AT_MOST);
    return 0;
}

int queue_buffer(CameraFile& state, const v4l2_buffer& buffer)
{
    if (buffer.memory != V4L2_MEMORY_USERPTR || buffer.length < BYTES_A_FRAME)
        return EINVAL;
    state.queue.push_back(buffer);
    return 0;
}

int take_buffer(int file, CameraFile& state, v4l2_buffer& buffer)
{
    uint64_t frames_due = 0;
    if (!state.is_running)
        return EINVAL;
    if (state.queue.empty() || read(file, &frames_due, sizeof(frames_due)) < 0)
        return EAGAIN;
    state.frames += uint32_t(frames_due);
    buffer = state.queue.front();
    state.queue.pop_front();
    // Outside of the kernel the buffer is ordinary memory of this process.
    draw_frame(reinterpret_cast<uint8_t*>(buffer.m.userptr), state.device->camera.border,
               state.frames);
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    ++pictures;
    buffer.bytesused = BYTES_A_FRAME;
    buffer.sequence = state.frames;
    buffer.flags = V4L2_BUF_FLAG_DONE | V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    buffer.timestamp.tv_sec = now / 1s;
    buffer.timestamp.tv_usec = now % 1s / 1us;
    return 0;
}

int run(int file, CameraFile& state)
{
    if (state.device->user != file)
        return EINVAL;
    constexpr auto PERIOD = std::chrono::nanoseconds(1s) / FRAMES_A_SECOND;
    set_timer(file, PERIOD, PERIOD);
    state.is_running = true;
    return 0;
}

int rest(int file, CameraFile& state)
{
    set_timer(file, 0ns, 0ns);
    state.is_running = false;
    state.queue.clear();
    return 0;
}

int answer(int file, CameraFile& state, uint32_t request, void* argument)
{
    Device& device = *state.device;
    if (!device.is_plugged)
        return ENODEV;
    switch (request) {
    case VIDIOC_QUERYCAP:
        return describe(device, *static_cast<v4l2_capability*>(argument));
    case VIDIOC_ENUM_FMT:
        return describe(*static_cast<v4l2_fmtdesc*>(argument));
    case VIDIOC_ENUM_FRAMESIZES:
        return describe(*static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
        return describe(*static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_G_FMT:
    case VIDIOC_S_FMT:
    case VIDIOC_TRY_FMT:
        return agree_on(*static_cast<v4l2_format*>(argument));
    case VIDIOC_G_PARM:
    case VIDIOC_S_PARM:
        return agree_on(*static_cast<v4l2_streamparm*>(argument));
    case VIDIOC_QUERYCTRL:
        return describe(device, *static_cast<v4l2_queryctrl*>(argument));
    case VIDIOC_G_CTRL:
        return get(device, *static_cast<v4l2_control*>(argument));
    case VIDIOC_S_CTRL:
        return set(device, *static_cast<v4l2_control*>(argument));
    case VIDIOC_REQBUFS:
        return claim_buffers(file, state, *static_cast<v4l2_requestbuffers*>(argument));
    case VIDIOC_QBUF:
        return queue_buffer(state, *static_cast<v4l2_buffer*>(argument));
    case VIDIOC_DQBUF:
        return take_buffer(file, state, *static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON:
        return run(file, state);
    case VIDIOC_STREAMOFF:
        return rest(file, state);
    default:
        return ENOTTY;
    }
}

// --- Plugging ---------------------------------------------------------------------------------------

std::string node_path(const std::string& node)
{
    return camera_nodes() + "/" + node;
}

void unplug(const std::string& node)
{
    System& system = system_();
    const auto found = system.devices.find(node);
    found->second->is_plugged = false;
    for (const auto& [file, state] : system.files) {
        // As a driver does it: who waits for a frame is woken and then told by the call that follows.
        if (state.device == found->second && state.is_running)
            set_timer(file, 1ns, 0ns);
    }
    system.devices.erase(found);
    unlink(node_path(node).c_str());
}

void plug(const std::string& node, const FakeCamera& camera)
{
    const auto controls = camera.has_controls ? all_controls() : std::map<uint32_t, Control>();
    system_().devices[node] = std::make_shared<Device>(Device{camera, controls});
    // What is listed are pipes, for those are no ordinary files, and anybody may make them.
    if (mkfifo(node_path(node).c_str(), 0600) != 0)
        throw std::runtime_error("cannot make " + node_path(node));
}

void wait_until_listed(std::unique_lock<std::mutex> lock)
{
    System& system = system_();
    const int before = system.listings;
    const auto has_been_listed = [&] { return system.listings > before; };
    if (system.is_watched && !system.listed.wait_for(lock, 10s, has_been_listed))
        throw std::runtime_error("nobody looks for the cameras that were plugged");
}

template <typename Predicate>
std::vector<std::string> cameras_of_files(Predicate counts)
{
    const std::lock_guard lock(system_().mutex);
    std::vector<std::string> names;
    for (const auto& [file, state] : system_().files) {
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

// --- For the system's calls -------------------------------------------------------------------------

const std::string& camera_nodes()
{
    static const Folder folder;
    return folder.path;
}

void note_nodes_are_listed()
{
    const std::lock_guard lock(system_().mutex);
    ++system_().listings;
    system_().listed.notify_all();
}

void note_nodes_are_watched()
{
    const std::lock_guard lock(system_().mutex);
    system_().is_watched = true;
}

int open_camera(const std::string& node, int flags)
{
    const std::lock_guard lock(system_().mutex);
    const auto found = system_().devices.find(std::filesystem::path(node).filename());
    if (found == system_().devices.end())
        return -ENOENT;
    if (found->second->camera.is_locked && (flags & O_ACCMODE) != O_RDONLY)
        return -EACCES;
    const int file = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (file < 0 || file >= FILES_AT_MOST)
        return -EMFILE;
    system_().files[file].device = found->second;
    camera_files[file] = true;
    return file;
}

bool is_camera_file(int file)
{
    return file >= 0 && file < FILES_AT_MOST && camera_files[file];
}

void close_camera(int file)
{
    const std::lock_guard lock(system_().mutex);
    int& user = system_().files[file].device->user;
    user = user == file ? -1 : user;
    system_().files.erase(file);
    camera_files[file] = false;
}

int ask_camera(int file, uint32_t request, void* argument)
{
    const std::lock_guard lock(system_().mutex);
    const auto state = system_().files.find(file);
    return state == system_().files.end() ? EBADF : answer(file, state->second, request, argument);
}

// --- For tests --------------------------------------------------------------------------------------

void plug_cameras(const std::vector<FakeCamera>& cameras)
{
    std::unique_lock lock(system_().mutex);
    if (cameras.empty() && system_().devices.empty())
        return;
    while (!system_().devices.empty())
        unplug(system_().devices.begin()->first);
    for (size_t i = 0; i < cameras.size(); ++i)
        plug("video" + std::to_string(i), cameras[i]);
    wait_until_listed(std::move(lock));
}

void unplug_camera(const std::string& name)
{
    std::unique_lock lock(system_().mutex);
    const auto found = std::ranges::find_if(
        system_().devices, [&](const auto& device) { return device.second->camera.name == name; });
    if (found == system_().devices.end())
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

int camera_pictures()
{
    return pictures;
}

std::optional<int> camera_control(const std::string& name, uint32_t control)
{
    const std::lock_guard lock(system_().mutex);
    for (const auto& [node, device] : system_().devices) {
        if (device->camera.name == name && device->controls.contains(control))
            return device->controls.at(control).value;
    }
    return std::nullopt;
}

}  // namespace marlune::test
