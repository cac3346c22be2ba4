#pragma once

#include "support/media/fake_camera.h"

#include <linux/videodev2.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>

// What the driver of a camera does, one call at a time: who calls keeps others out meanwhile.
namespace marlune::test {

struct CameraControl {
    int32_t minimum, maximum, value;
};

struct CameraDevice {
    FakeCamera camera;
    std::map<uint32_t, CameraControl> controls;
    bool is_plugged = true;
    int user = -1;  // the file that has claimed its buffers
};

/** A file that is open on a camera, by number that of a timer, which is ready when a frame is due. */
struct CameraFile {
    std::shared_ptr<CameraDevice> device;
    std::deque<v4l2_buffer> queue;
    bool is_running = false;
    uint32_t frames = 0;
};

std::shared_ptr<CameraDevice> make_camera_device(const FakeCamera& camera);

/** Does what a call of ioctl() asks for. Returns 0 or the number of an error. */
int answer(int file, CameraFile& state, uint32_t request, void* argument);

/** Wakes who waits for a frame, to be told by the call that follows that there will be none. */
void wake(int file);

}  // namespace marlune::test
