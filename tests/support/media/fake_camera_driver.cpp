#include "support/media/fake_camera_driver.h"

#include "support/media/fake_camera_picture.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr uint32_t FRAMES_A_SECOND = 30;
constexpr size_t BUFFERS_AT_MOST = 8;

std::atomic<int> pictures_given = 0;

std::map<uint32_t, CameraControl> all_controls()
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

void set_timer(int file, std::chrono::nanoseconds first, std::chrono::nanoseconds period)
{
    itimerspec times{};
    times.it_value.tv_nsec = first.count();
    times.it_interval.tv_nsec = period.count();
    timerfd_settime(file, 0, &times, nullptr);
}

template <size_t Size>
void copy_text(const std::string& text, __u8 (&target)[Size])
{
    std::strncpy(reinterpret_cast<char*>(target), text.c_str(), Size - 1);
}

int describe(const CameraDevice& device, v4l2_capability& capability)
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

/** Only one format exists, so every request results in it. */
int agree_on(v4l2_format& format)
{
    if (format.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
        return EINVAL;
    format.fmt.pix = {};
    format.fmt.pix.width = CAMERA_WIDTH;
    format.fmt.pix.height = CAMERA_HEIGHT;
    format.fmt.pix.pixelformat = V4L2_PIX_FMT_YUYV;
    format.fmt.pix.field = V4L2_FIELD_NONE;
    format.fmt.pix.bytesperline = CAMERA_BYTES_A_ROW;
    format.fmt.pix.sizeimage = CAMERA_BYTES_A_PICTURE;
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

int describe(const CameraDevice& device, v4l2_queryctrl& query)
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

int get(const CameraDevice& device, v4l2_control& control)
{
    const auto found = device.controls.find(control.id);
    if (found == device.controls.end())
        return EINVAL;
    control.value = found->second.value;
    return 0;
}

int set(CameraDevice& device, const v4l2_control& control)
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
    if (buffer.memory != V4L2_MEMORY_USERPTR || buffer.length < CAMERA_BYTES_A_PICTURE)
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
    // Outside the kernel, the buffer is ordinary memory of this process.
    draw_camera_picture(reinterpret_cast<uint8_t*>(buffer.m.userptr), state.device->camera.border,
                        state.frames);
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    ++pictures_given;
    buffer.bytesused = CAMERA_BYTES_A_PICTURE;
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

}  // namespace

std::shared_ptr<CameraDevice> make_camera_device(const FakeCamera& camera)
{
    const auto device = std::make_shared<CameraDevice>();
    device->camera = camera;
    if (camera.has_controls)
        device->controls = all_controls();
    return device;
}

int answer(int file, CameraFile& state, uint32_t request, void* argument)
{
    CameraDevice& device = *state.device;
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

void wake(int file)
{
    set_timer(file, 1ns, 0ns);
}

int camera_pictures()
{
    return pictures_given;
}

}  // namespace marlune::test
