#pragma once

#include "support/media/fake_camera.h"

#include <linux/videodev2.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>

// A camera's driver, one call at a time: the caller holds a lock meanwhile.
namespace marlune::test {

struct CameraControl {
    int32_t minimum, maximum, value;
};

struct CameraDevice {
    FakeCamera camera;
    std::map<uint32_t, CameraControl> controls;
    bool is_plugged = true;
    int user = -1;  // the file that has allocated its buffers
};

/**
 * A file that is open on a camera. Its number is that of a timer, which becomes ready when a frame
 * is due.
 */
struct CameraFile {
    std::shared_ptr<CameraDevice> device;
    std::deque<v4l2_buffer> queue;
    bool is_running = false;
    uint32_t frames = 0;
};

std::shared_ptr<CameraDevice> make_camera_device(const FakeCamera& camera);

/** Performs a call of ioctl(). Returns 0 or an error number. */
int answer(int file, CameraFile& state, uint32_t request, void* argument);

/**
 * Wakes the thread that waits for a frame; its next call then reports that no more frames follow.
 */
void wake(int file);

}  // namespace marlune::test
